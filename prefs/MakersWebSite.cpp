#include "prefs/MakersWebSite.h"

namespace quilo {

QUrl makersWebSite() { return QUrl(QStringLiteral(QUILO_MAKER_SITE)); }

// Resolved against the site, so the setting may end in a slash or not.
QUrl updateDocumentURL() { return makersWebSite().resolved(QUrl("/appversions.xml")); }

QUrl donationPageURL() { return makersWebSite().resolved(QUrl("/register/")); }

} // namespace quilo
