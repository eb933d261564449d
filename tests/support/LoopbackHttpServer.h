#pragma once

// A web server of the test's own on 127.0.0.1: a QTcpServer on a thread of
// its own, so it answers while the test's thread waits for a fetch. Each path
// gets what the test set for it (404 otherwise), one request per connection.
#include <QByteArray>
#include <QHash>
#include <QHostAddress>
#include <QMutex>
#include <QSemaphore>
#include <QStringList>
#include <QTcpServer>
#include <QTcpSocket>
#include <QThread>
#include <QTimer>
#include <QUrl>

#include <memory>
#include <utility>

namespace quilo::test {

struct HttpResponse {
    enum class Kind {
        Whole,     // status, headers and body, then the connection closes
        Silent,    // reads the request and never answers
        Endless,   // a body with no length that never ends
        Announced, // a Content-Length of `length`, then nothing
    };
    Kind kind = Kind::Whole;
    int status = 200;
    QByteArray body;
    QByteArray location;
    qint64 length = 0;
    int delayMs = 0; // before it answers

    static HttpResponse document(const QByteArray& body) { return {Kind::Whole, 200, body, {}, 0}; }
    static HttpResponse error(int status, const QByteArray& body = {}) { return {Kind::Whole, status, body, {}, 0}; }
    static HttpResponse redirect(const QByteArray& to) { return {Kind::Whole, 302, {}, to, 0}; }
    static HttpResponse silence() { return {Kind::Silent, 200, {}, {}, 0}; }
    static HttpResponse endless() { return {Kind::Endless, 200, {}, {}, 0}; }
    static HttpResponse announcing(qint64 length) { return {Kind::Announced, 200, {}, {}, length}; }
    static HttpResponse late(const QByteArray& body, int delayMs) { return {Kind::Whole, 200, body, {}, 0, delayMs}; }
};

class LoopbackHttpServer {
public:
    LoopbackHttpServer()
        : thread_(*this)
    {
        thread_.start();
        ready_.acquire();
    }
    ~LoopbackHttpServer()
    {
        thread_.quit();
        thread_.wait();
    }
    LoopbackHttpServer(const LoopbackHttpServer&) = delete;
    LoopbackHttpServer& operator=(const LoopbackHttpServer&) = delete;

    void serve(const QString& path, const HttpResponse& response)
    {
        QMutexLocker lock(&mutex_);
        responses_.insert(path, response);
    }
    QUrl url(const QString& path) const { return QUrl(QString("http://127.0.0.1:%1%2").arg(port_).arg(path)); }
    quint16 port() const { return port_; }
    // "GET /path" for every request, in order.
    QStringList requests() const
    {
        QMutexLocker lock(&mutex_);
        return requests_;
    }

    // A port on 127.0.0.1 with nothing listening on it.
    static quint16 closedPort()
    {
        QTcpServer probe;
        probe.listen(QHostAddress::LocalHost);
        const quint16 port = probe.serverPort();
        probe.close();
        return port;
    }

private:
    class Thread : public QThread {
    public:
        explicit Thread(LoopbackHttpServer& owner) : owner_(owner) {}

    protected:
        void run() override
        {
            QTcpServer server;
            server.listen(QHostAddress::LocalHost);
            owner_.port_ = server.serverPort();
            QObject::connect(&server, &QTcpServer::newConnection, &server, [&] {
                while (QTcpSocket* socket = server.nextPendingConnection())
                    owner_.handle(socket);
            });
            owner_.ready_.release();
            exec();
        }

    private:
        LoopbackHttpServer& owner_;
    };

    void handle(QTcpSocket* socket)
    {
        struct Exchange {
            QByteArray request;
            bool answered = false;
        };
        auto exchange = std::make_shared<Exchange>();
        QObject::connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        QObject::connect(socket, &QTcpSocket::readyRead, socket, [this, socket, exchange] {
            exchange->request += socket->readAll();
            if (exchange->answered || !exchange->request.contains("\r\n\r\n"))
                return;
            exchange->answered = true;
            const QByteArray& request = exchange->request;
            const QList<QByteArray> line = request.left(request.indexOf("\r\n")).split(' ');
            const QString path = QString::fromLatin1(line.value(1));
            answer(socket, responseFor(line.value(0) + ' ' + path, path));
        });
    }

    HttpResponse responseFor(const QString& request, const QString& path)
    {
        QMutexLocker lock(&mutex_);
        requests_ << request;
        return responses_.value(path, HttpResponse::error(404, "<html>Not Found</html>"));
    }

    static QByteArray reasonPhrase(int status)
    {
        switch (status) {
        case 200:
            return "OK";
        case 302:
            return "Found";
        case 404:
            return "Not Found";
        default:
            return "Error";
        }
    }

    static QByteArray head(int status, const QByteArray& fields)
    {
        return "HTTP/1.1 " + QByteArray::number(status) + ' ' + reasonPhrase(status)
            + "\r\nContent-Type: application/xml\r\n" + fields + "Connection: close\r\n\r\n";
    }

    static void answer(QTcpSocket* socket, HttpResponse response)
    {
        if (response.delayMs > 0) {
            const int delayMs = std::exchange(response.delayMs, 0);
            QTimer::singleShot(delayMs, socket, [socket, response] { answer(socket, response); });
            return;
        }
        switch (response.kind) {
        case HttpResponse::Kind::Whole: {
            QByteArray fields = "Content-Length: " + QByteArray::number(response.body.size()) + "\r\n";
            if (!response.location.isEmpty())
                fields += "Location: " + response.location + "\r\n";
            socket->write(head(response.status, fields) + response.body);
            socket->disconnectFromHost();
            break;
        }
        case HttpResponse::Kind::Silent:
            break;
        case HttpResponse::Kind::Endless:
            socket->write(head(200, {}) + "<?xml version=\"1.0\"?><plist><string>");
            feedForever(socket);
            break;
        case HttpResponse::Kind::Announced:
            socket->write(head(200, "Content-Length: " + QByteArray::number(response.length) + "\r\n"));
            break;
        }
    }

    // Keeps the socket's buffer topped up while the client reads, up to a
    // bound that no test should ever reach.
    static void feedForever(QTcpSocket* socket)
    {
        constexpr qint64 kBound = qint64(1) << 32;
        auto sent = std::make_shared<qint64>(0);
        auto feed = [socket, sent] {
            static const QByteArray chunk(64 * 1024, ' ');
            while (socket->bytesToWrite() < 4 * chunk.size() && *sent < kBound) {
                socket->write(chunk);
                *sent += chunk.size();
            }
        };
        QObject::connect(socket, &QTcpSocket::bytesWritten, socket, feed);
        feed();
    }

    Thread thread_;
    QSemaphore ready_;
    quint16 port_ = 0;
    mutable QMutex mutex_;
    QHash<QString, HttpResponse> responses_;
    QStringList requests_;
};

} // namespace quilo::test
