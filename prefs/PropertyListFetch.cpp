#include "prefs/PropertyListFetch.h"

#include <QEventLoop>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QThread>
#include <QTimer>

#include <memory>

namespace quilo {
namespace {

constexpr int kMaximumRedirects = 5;

// One GET with its own network manager and event loop, run on a thread of
// its own from start to end.
class Download {
public:
    Download(const QUrl& url, std::chrono::milliseconds timeout, qsizetype maximumBytes)
        : url_(url)
        , timeout_(timeout)
        , maximumBytes_(maximumBytes)
    {
    }

    std::optional<QByteArray> run(QString& error, std::stop_token cancel)
    {
        QNetworkAccessManager manager;
        QNetworkReply* reply = manager.get(request());
        QEventLoop loop;
        QTimer deadline;
        deadline.setSingleShot(true);
        deadline.setTimerType(Qt::PreciseTimer);
        QObject::connect(&deadline, &QTimer::timeout, &loop,
                         [&] { stop(reply, QString("no answer within %1 ms").arg(timeout_.count())); });
        QObject::connect(reply, &QNetworkReply::redirected, &loop, [&](const QUrl& to) { follow(reply, to); });
        QObject::connect(reply, &QNetworkReply::metaDataChanged, &loop, [&] { checkAnnouncedSize(reply); });
        QObject::connect(reply, &QNetworkReply::readyRead, &loop, [&] { take(reply); });
        QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
        // Runs at once when the stop came first; the abort waits for the loop.
        const std::stop_callback onCancel(cancel, [&] {
            QMetaObject::invokeMethod(reply, [&] { stop(reply, "stopped: Quilo is quitting"); }, Qt::QueuedConnection);
        });
        deadline.start(timeout_);
        if (!reply->isFinished())
            loop.exec();
        return result(reply, error);
    }

private:
    QNetworkRequest request() const
    {
        QNetworkRequest request(url_);
        // Each redirect is looked at: a document from the network must not
        // lead the check to a file on this machine or any other scheme.
        request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::UserVerifiedRedirectPolicy);
        request.setMaximumRedirectsAllowed(kMaximumRedirects);
        request.setAttribute(QNetworkRequest::CacheLoadControlAttribute, QNetworkRequest::AlwaysNetwork);
        return request;
    }

    void follow(QNetworkReply* reply, const QUrl& target)
    {
        if (isWebAddress(target))
            emit reply->redirectAllowed();
        else
            stop(reply, "redirected to an address that is not http or https");
    }

    void checkAnnouncedSize(QNetworkReply* reply)
    {
        const QVariant length = reply->header(QNetworkRequest::ContentLengthHeader);
        if (length.isValid() && length.toLongLong() > maximumBytes_)
            stop(reply, tooLarge());
    }

    void take(QNetworkReply* reply)
    {
        body_ += reply->readAll();
        if (body_.size() > maximumBytes_)
            stop(reply, tooLarge());
    }

    std::optional<QByteArray> result(QNetworkReply* reply, QString& error)
    {
        if (failure_.isEmpty() && reply->error() != QNetworkReply::NoError)
            failure_ = reply->errorString();
        const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
        if (failure_.isEmpty() && (status < 200 || status > 299))
            failure_ = QString("HTTP status %1").arg(status);
        if (failure_.isEmpty())
            take(reply);
        if (!failure_.isEmpty()) {
            error = failure_;
            return std::nullopt;
        }
        return body_;
    }

    // Keeps the first reason: an abort reports a cancellation of its own.
    void stop(QNetworkReply* reply, const QString& why)
    {
        if (failure_.isEmpty())
            failure_ = why;
        reply->abort();
    }

    QString tooLarge() const { return "the document is larger than " + QString::number(maximumBytes_) + " bytes"; }

    QUrl url_;
    std::chrono::milliseconds timeout_;
    qsizetype maximumBytes_;
    QByteArray body_;
    QString failure_;
};

} // namespace

bool isWebAddress(const QUrl& url)
{
    return url.isValid() && (url.scheme() == "http" || url.scheme() == "https") && !url.host().isEmpty();
}

std::optional<QVariant> propertyListWithContentsOfURL(const QUrl& url, std::chrono::milliseconds timeout,
                                                      QString* error, const PropertyListLimits& limits,
                                                      std::stop_token cancel)
{
    QString why;
    std::optional<QVariant> result;
    if (!isWebAddress(url)) {
        why = "not an http or https address";
    } else {
        // The caller waits, as for a read from a file, without spinning its
        // own event loop: nothing of its (a second press of the button that
        // started the check) runs in the middle of it.
        Download download(url, timeout, limits.maximumBytes);
        std::optional<QByteArray> body;
        std::unique_ptr<QThread> thread(QThread::create([&] { body = download.run(why, cancel); }));
        thread->start();
        thread->wait();
        if (body)
            result = propertyListFromXml(*body, &why, limits);
    }
    if (error)
        *error = why;
    return result;
}

} // namespace quilo
