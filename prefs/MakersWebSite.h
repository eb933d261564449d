#pragma once

#include <QString>
#include <QUrl>

namespace quilo {

// Pages on the maker's web site, whose address is set once when Quilo is
// built (the QUILO_MAKER_SITE setting of CMake). Without a site, or with a
// plain http one that the build did not allow (QUILO_ALLOW_HTTP_UPDATES),
// they are empty: nothing is fetched or opened.
//
// The update document that the update check reads: "/appversions.xml".
QUrl updateDocumentURL();
// The donation page that the menu's Donate item opens: "/register/".
QUrl donationPageURL();

// `path` on `site`, or an empty address when the site is empty, is no https
// address with a host, or is http and `httpAllowed` is false.
QUrl pageOnMakersSite(const QString& site, const QString& path, bool httpAllowed);

} // namespace quilo
