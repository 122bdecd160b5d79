// Where the key goes: to the one host over verified TLS, and to nothing that anybody else reads.

#include "inspect/chatlogwindow.h"
#include "tests/preferences/preferencesbox.h"
#include "tests/support/entries.h"
#include "tests/support/shown.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/surveystage.h"
#include "tests/support/testcase.h"
#include "tests/survey/chatexchange.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QDir>
#include <QDirIterator>
#include <QHostAddress>
#include <QImage>
#include <QJsonArray>
#include <QJsonObject>
#include <QMetaProperty>
#include <QNetworkProxy>
#include <QTabWidget>
#include <QTcpServer>
#include <QTcpSocket>

using namespace Qt::StringLiterals;
using standin::ChatEndpoint;
using standin::Identity;
using standin::Reply;
using standin::Request;

namespace {

const QString theKey = u"sk-nobodys-business"_s;

/// While it lives, collects every message of every type.
class EveryMessage
{
public:
    EveryMessage()
        : before(qInstallMessageHandler(
              [](QtMsgType, const QMessageLogContext &, const QString &message) { texts() << message; }))
    {
        texts().clear();
    }
    ~EveryMessage() { qInstallMessageHandler(before); }
    Q_DISABLE_COPY_MOVE(EveryMessage)

    static QStringList &texts()
    {
        static QStringList all;
        return all;
    }

private:
    QtMessageHandler before;
};

/// All that a widget says, in whatever property it says it.
QStringList wordsOf(const QWidget *widget)
{
    QStringList words;
    const QMetaObject *meta = widget->metaObject();
    for (int index = 0; index < meta->propertyCount(); ++index) {
        const QVariant value = meta->property(index).read(widget);
        if (value.canConvert<QString>())
            words << value.toString();
    }
    return words;
}

QStringList wordsOf(const QAbstractItemModel *model)
{
    QStringList words;
    for (int row = 0; row < model->rowCount(); ++row) {
        for (int column = 0; column < model->columnCount(); ++column) {
            for (const auto &[role, value] : model->itemData(model->index(row, column)).asKeyValueRange())
                words << value.toString();
        }
    }
    return words;
}

/// The widgets, of all there are, that say a text.
QStringList widgetsSaying(const QString &text)
{
    QStringList found;
    for (const auto widgets = QApplication::allWidgets(); const QWidget *widget : widgets) {
        QStringList words = wordsOf(widget);
        if (const auto *view = qobject_cast<const QAbstractItemView *>(widget);
            view != nullptr && view->model() != nullptr)
            words << wordsOf(view->model());
        if (words.join(u'\n').contains(text))
            found << QString::fromLatin1(widget->metaObject()->className()) + u' ' + widget->objectName();
    }
    return found;
}

/// The files below a folder in which the bytes of a text stand, in UTF-8 or UTF-16.
QStringList filesHolding(const QString &folder, const QString &text)
{
    QStringList found;
    QDirIterator files(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        const QByteArray bytes = readBytes(files.next());
        const QByteArray wide(reinterpret_cast<const char *>(text.utf16()), text.size() * 2);
        if (bytes.contains(text.toUtf8()) || bytes.contains(wide))
            found << QDir(folder).relativeFilePath(files.filePath());
    }
    return found;
}

/// Pictures of each tab and of the log window.
QList<QImage> pictures(Stage &stage)
{
    QList<QImage> all;
    auto *tabs = stage.window()->findChild<QTabWidget *>();
    for (int index = 0; index < tabs->count(); ++index) {
        tabs->setCurrentIndex(index);
        all << stage.window()->grab().toImage();
    }
    return all << logWindow(stage)->grab().toImage();
}

/// Hands on what comes and goes between the client and the endpoint, and writes down what the client says.
class Wire : public QObject
{
public:
    explicit Wire(const ChatEndpoint &endpoint)
        : farPort(endpoint.port())
    {
        connect(&server, &QTcpServer::newConnection, this, &Wire::join);
        server.listen(QHostAddress::LocalHost);
        QNetworkProxy::setApplicationProxy(
            {QNetworkProxy::HttpProxy, QHostAddress(QHostAddress::LocalHost).toString(), server.serverPort()});
    }

    QByteArray said;

private:
    void join()
    {
        QTcpSocket *near = server.nextPendingConnection();
        auto *far = new QTcpSocket(near);
        far->setProxy(QNetworkProxy::NoProxy);
        far->connectToHost(QHostAddress::LocalHost, farPort);
        connect(near, &QTcpSocket::readyRead, this, [this, near, far] {
            const QByteArray bytes = near->readAll();
            said += bytes;
            far->write(bytes);
        });
        connect(far, &QTcpSocket::readyRead, near, [near, far] { near->write(far->readAll()); });
        connect(far, &QTcpSocket::disconnected, near, &QTcpSocket::disconnectFromHost);
        connect(near, &QTcpSocket::disconnected, far, &QTcpSocket::disconnectFromHost);
    }

    QTcpServer server;
    quint16 farPort;
};

} // namespace

class TestKeyTravels : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void the_key_is_in_the_settings_and_in_nothing_else()
    {
        const EveryMessage messages;
        SurveyStage stage;
        QVERIFY(storePreferences(stage, {theKey, u"large"_s, u"small"_s}));
        QVERIFY(stage.exec(u"INSERT INTO metadata VALUES ('any', 'thing')"_s));
        stage.fillTwoByTwo();
        stage.endpoint.queue(Reply::content(u"first"_s));
        stage.endpoint.queue(Reply::status(401, "{\"error\": \"no\"}"));
        stage.endpoint.queue(Reply::garbage("hello\r\n\r\n"));
        QVERIFY(stage.run());
        stage.endpoint.setIdentity(Identity::WrongHost);
        QVERIFY(stage.run());
        for (const Request &request : stage.endpoint.requests())
            QCOMPARE(request.header("Authorization"), "Bearer " + theKey.toUtf8());
        QVERIFY(stage.result("saveProjectToFile", stage.path(u"saved.ormt"_s)));
        QVERIFY(stage.result("exportPackToFile", stage.path(u"saved.ornk"_s)));
        ConversationBox(stage).show();

        QVERIFY(logText(stage).contains("! "_L1));
        QCOMPARE(widgetsSaying(theKey), QStringList());
        QVERIFY(!widgetsSaying(u"first"_s).isEmpty());
        QVERIFY(!EveryMessage::texts().isEmpty());
        QVERIFY(!EveryMessage::texts().join(u'\n').contains(theKey));
        QCOMPARE(filesHolding(stage.path(QString()), theKey), QStringList{u".config/Orrinet/Orrinet.conf"_s});
        QVERIFY(!everyRow(stage.database()).join(u'\n').contains(theKey));
    }

    void no_picture_depends_on_the_key()
    {
        SurveyStage stage;
        stage.fillTwoByTwo();
        stage.window()->show();
        QVERIFY(stage.run());
        pictures(stage); // what a first showing lays out is laid out
        const QList<QImage> before = pictures(stage);
        QVERIFY(storePreferences(stage, {theKey, u"gpt-4.1"_s, u"gpt-4.1-mini"_s}));
        QVERIFY(stage.run());
        const QList<QImage> after = pictures(stage);
        QCOMPARE(after.size(), 6);
        for (int index = 0; index < 6; ++index)
            QVERIFY2(before.at(index) == after.at(index), qPrintable(QString::number(index)));
    }

    void the_preferences_alone_show_the_key_and_while_they_are_open()
    {
        SurveyStage stage;
        Stage::setSetting(u"openai/api_key"_s, theKey);
        QStringList saying;
        QVERIFY(inPreferences(stage, [&saying](QDialog *) { saying = widgetsSaying(theKey); }));
        QCOMPARE(saying, QStringList{u"QLineEdit apiKeyEdit"_s});
        QCOMPARE(widgetsSaying(theKey), QStringList());
    }

    void no_redirection_takes_the_key_along_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<QByteArray>("target");
        const auto add = [](int code, const char *target) {
            QTest::addRow("%d to %s", code, target) << code << QByteArray(target);
        };
        for (const int code : {300, 301, 302, 303, 305, 307, 308}) {
            add(code, "https://elsewhere.example/v1/chat/completions");
            add(code, "http://api.openai.com/v1/chat/completions");
            add(code, "https://api.openai.com:8443/v1/chat/completions");
        }
        for (const char *target :
             {"//elsewhere.example/v1/chat/completions", "https://api.openai.com@elsewhere.example/",
              "https://api.openai.com./v1/chat/completions", "ftp://api.openai.com/", "data:application/json,{}"})
            add(307, target);
    }
    void no_redirection_takes_the_key_along()
    {
        QFETCH(const int, code);
        QFETCH(const QByteArray, target);
        SurveyStage stage;
        const Wire wire(stage.endpoint);
        stage.endpoint.queue(Reply::status(code).with("Location"_ba, target));
        ChatExchange exchange;
        exchange.sendAnything();
        QVERIFY(exchange.ended());
        // A status that Qt follows for nobody is no failure to it either, and its body is taken for the answer.
        const bool followable = code != 300;
        QVERIFY2(exchange.events().constLast().startsWith(followable ? "requestFailed: "_L1 : "responseReceived: "_L1),
                 qPrintable(exchange.events().constLast()));
        QCOMPARE(stage.endpoint.requests().size(), 1);
        QCOMPARE(stage.endpoint.connections(), 1);
        QCOMPARE(wire.said.count("CONNECT "), 1);
    }

    void a_redirection_on_the_host_leads_nowhere_else_data()
    {
        QTest::addColumn<int>("code");
        for (const int code : {301, 302, 303, 307, 308})
            QTest::addRow("%d", code) << code;
    }
    void a_redirection_on_the_host_leads_nowhere_else()
    {
        QFETCH(const int, code);
        SurveyStage stage;
        const Wire wire(stage.endpoint);
        stage.endpoint.queue(Reply::status(code).with("Location"_ba, "/v1/moved"_ba));
        stage.endpoint.queue(Reply::status(code).with("Location"_ba, "https://elsewhere.example/v1/moved"_ba));
        ChatExchange exchange;
        exchange.sendAnything();
        QVERIFY(exchange.ended());
        QVERIFY2(exchange.outcome().constFirst().startsWith("requestFailed: "_L1),
                 qPrintable(exchange.outcome().constFirst()));
        QCOMPARE(stage.endpoint.requests().size(), 2);
        QCOMPARE(stage.endpoint.requests().at(1).header("Authorization"), "Bearer test-key"_ba);
        QVERIFY(wire.said.count("CONNECT ") >= 2);
        QCOMPARE(wire.said.count("CONNECT "), wire.said.count("CONNECT api.openai.com:443 "));
        QVERIFY(!wire.said.contains("elsewhere"));
    }

    void nothing_of_the_key_can_be_read_on_the_wire_data()
    {
        QTest::addColumn<Identity>("identity");
        QTest::newRow("the host") << Identity::Good;
        QTest::newRow("another host") << Identity::WrongHost;
        QTest::newRow("an expired certificate") << Identity::Expired;
        QTest::newRow("an unknown issuer") << Identity::UnknownIssuer;
    }
    void nothing_of_the_key_can_be_read_on_the_wire()
    {
        QFETCH(const Identity, identity);
        SurveyStage stage;
        const Wire wire(stage.endpoint);
        stage.endpoint.setIdentity(identity);
        const qsizetype length = 100'000;
        ChatExchange exchange;
        exchange.object()->send({turn(u"user"_s, QString(length, u'x'))}, u"any-model"_s, {}, {}, {}, -1.0);
        QVERIFY(exchange.ended());
        const bool trusted = identity == Identity::Good;
        QVERIFY(exchange.events().constLast().startsWith(trusted ? "responseReceived: "_L1 : "requestFailed: "_L1));
        QCOMPARE(stage.endpoint.requests().size(), trusted ? 1 : 0);

        QVERIFY2(wire.said.startsWith("CONNECT api.openai.com:443 "), wire.said.constData());
        QCOMPARE(wire.said.count("CONNECT "), 1);
        QVERIFY(!wire.said.contains("test-key"));
        QVERIFY(!wire.said.toLower().contains("authorization"));
        // Not even in a form that cannot be read: what went out is far shorter than the question.
        QCOMPARE(wire.said.size() > length, trusted);
        QVERIFY(trusted || wire.said.size() < length / 10);
    }
};

ORRINET_TEST(TestKeyTravels)
#include "tst_keytravels.moc"
