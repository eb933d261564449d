#include "prefs/MakersWebSite.h"

namespace quilo {

QUrl pageOnMakersSite(const QString& site, const QString& path, bool httpAllowed)
{
    const QUrl url(site);
    const bool secure = url.scheme() == QStringLiteral("https");
    const bool allowed = secure || (httpAllowed && url.scheme() == QStringLiteral("http"));
    if (site.isEmpty() || !allowed || url.host().isEmpty())
        return {};
    // Resolved against the site, so the setting may end in a slash or not.
    return url.resolved(QUrl(path));
}

QUrl updateDocumentURL()
{
    return pageOnMakersSite(QStringLiteral(QUILO_MAKER_SITE), QStringLiteral("/appversions.xml"),
                            QUILO_ALLOW_HTTP_UPDATES);
}

QUrl donationPageURL()
{
    return pageOnMakersSite(QStringLiteral(QUILO_MAKER_SITE), QStringLiteral("/register/"), QUILO_ALLOW_HTTP_UPDATES);
}

} // namespace quilo
