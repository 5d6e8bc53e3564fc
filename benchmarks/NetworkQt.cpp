#include "Bench.h"
#include "NetworkClients.h"

#include <QCoreApplication>
#include <QEventLoop>
#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSslCertificate>
#include <QSslConfiguration>

namespace torvel::bench {
namespace {

class QtClient : public Client {
  public:
    explicit QtClient(const std::string& authority) : m_tls(QSslConfiguration::defaultConfiguration()) {
        m_tls.setCaCertificates(QSslCertificate::fromPath(QString::fromStdString(authority)));
    }

    void get(const Load& load, std::size_t total) override {
        std::size_t started = 0, done = 0;
        QEventLoop loop;
        const std::function<void()> start = [&] {
            ++started;
            QNetworkReply* const reply = m_manager.get(request(load.url));
            QObject::connect(reply, &QNetworkReply::finished, &loop, [&, reply] {
                if (reply->error() != QNetworkReply::NoError || reply->readAll().isEmpty())
                    giveUp("Qt: " + reply->errorString().toStdString());
                reply->deleteLater();
                if (started < total) start();
                if (++done == total) loop.quit();
            });
        };
        while (started < std::min(load.inFlight, total)) start();
        loop.exec();
    }

  private:
    QNetworkRequest request(const std::string& url) const {
        QNetworkRequest request(QUrl(QString::fromStdString(url)));
        request.setSslConfiguration(m_tls);
        request.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
        request.setRawHeader("Content-Type", "application/json");
        request.setRawHeader("Accept-Language", "en;q=1.0");
        request.setRawHeader("User-Agent", "bench/1.0");
        return request;
    }

    QSslConfiguration m_tls;
    QNetworkAccessManager m_manager;
};

}  // namespace

std::unique_ptr<Client> qtClient(const std::string& authority) {
    static int count = 1;
    static char name[] = "bench";
    static char* arguments[] = {name, nullptr};
    static QCoreApplication application(count, arguments);
    return std::make_unique<QtClient>(authority);
}

}  // namespace torvel::bench
