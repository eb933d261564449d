#pragma once

#include <QUrl>

namespace quilo {

// Pages on the maker's web site, whose address is set once when Quilo is
// built (the QUILO_MAKER_SITE setting of CMake).
QUrl makersWebSite();
// The update document that the update check reads: "/appversions.xml".
QUrl updateDocumentURL();
// The donation page that the menu's Donate item opens: "/register/".
QUrl donationPageURL();

} // namespace quilo
