#pragma once

// What the application asks the desktop to open, caught through Qt's own
// handlers for URL schemes while the object lives: no browser starts.
#include <QDesktopServices>
#include <QList>
#include <QMutex>
#include <QObject>
#include <QStringList>
#include <QThread>
#include <QUrl>

namespace quilo::test {

class OpenedUrls : public QObject {
    Q_OBJECT

public:
    OpenedUrls()
    {
        for (const QString& scheme : schemes())
            QDesktopServices::setUrlHandler(scheme, this, "open");
    }
    ~OpenedUrls() override
    {
        for (const QString& scheme : schemes())
            QDesktopServices::unsetUrlHandler(scheme);
    }

    QList<QUrl> urls() const
    {
        QMutexLocker lock(&mutex_);
        return urls_;
    }
    // The thread each one was opened on.
    QList<QThread*> threads() const
    {
        QMutexLocker lock(&mutex_);
        return threads_;
    }

public slots:
    void open(const QUrl& url)
    {
        QMutexLocker lock(&mutex_);
        urls_ << url;
        threads_ << QThread::currentThread();
    }

private:
    // The web's schemes, and some a hostile document might try.
    static QStringList schemes() { return {"http", "https", "file", "javascript", "ftp"}; }

    mutable QMutex mutex_;
    QList<QUrl> urls_;
    QList<QThread*> threads_;
};

} // namespace quilo::test
