#include "inspect/chatlogwindow.h"
#include "preferences/preferencesdialog.h"
#include "survey/chatrequester.h"
#include "survey/surveyrunner.h"
#include "tests/support/stage.h"
#include "tests/support/testcase.h"

#include <QMetaMethod>

using namespace Qt::StringLiterals;

/// A method as its class declares it: kind, access, what it returns, its name, the types and names of its parameters.
/// "short of" stands before the form of a slot that is called without its last argument.
static QString declared(const QMetaMethod &method)
{
    QStringList parts;
    if (method.attributes() & QMetaMethod::Cloned)
        parts << u"short of"_s;
    parts << (method.methodType() == QMetaMethod::Signal ? u"signal"_s : u"slot"_s)
          << (method.access() == QMetaMethod::Private ? u"private"_s : u"public"_s)
          << QString::fromLatin1(method.typeName());
    QStringList parameters;
    for (int index = 0; index < method.parameterCount(); ++index)
        parameters << QString::fromLatin1(method.parameterTypeName(index) + ' ' + method.parameterNames().at(index));
    return parts.join(u' ') + u' ' + QString::fromLatin1(method.name()) + u'(' + parameters.join(", "_L1) + u')';
}

class TestMetaObject : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_class_has_its_methods_in_their_order_and_nothing_else_data();
    void a_class_has_its_methods_in_their_order_and_nothing_else()
    {
        QFETCH(const QMetaObject *, meta);
        QCOMPARE(meta->className(), QTest::currentDataTag());
        QTEST(QString::fromLatin1(meta->superClass()->className()), "base");
        QCOMPARE(meta->propertyCount(), meta->superClass()->propertyCount());
        QCOMPARE(meta->enumeratorCount(), meta->superClass()->enumeratorCount());
        QCOMPARE(meta->classInfoCount(), meta->superClass()->classInfoCount());
        QCOMPARE(meta->constructorCount(), 0);
        QStringList methods;
        for (int index = meta->methodOffset(); index < meta->methodCount(); ++index) {
            methods << declared(meta->method(index));
            QCOMPARE(meta->method(index).revision(), 0);
        }
        QTEST(methods, "methods");
    }

    void a_question_without_labels_stores_NULL()
    {
        Stage stage;
        const QString labels = u"SELECT IFNULL(labels, 'none') FROM questions"_s;
        stage.call("insertQuestion", u"Why?"_s, u"text"_s, false);
        QCOMPARE(stage.column(labels), QStringList(u"none"_s));
        stage.call("updateQuestion", 1, u"Why?"_s, u"text"_s, false, u"[]"_s);
        QCOMPARE(stage.column(labels), QStringList(u"[]"_s));
        stage.call("updateQuestion", 1, u"Why?"_s, u"text"_s, false);
        QCOMPARE(stage.column(labels), QStringList(u"none"_s));
    }

    void a_persona_without_tags_bears_none()
    {
        Stage stage;
        stage.call("insertPersona", u"Number One"_s, u"Calm."_s);
        QCOMPARE(stage.count(u"personas"_s), 1);
        QCOMPARE(stage.count(u"persona_tags"_s), 0);

        const QString uuid = stage.value(u"SELECT uuid FROM personas"_s).toString();
        stage.call("updatePersona", uuid, u"Number One"_s, u"Calm."_s, u"first"_s);
        QCOMPARE(stage.count(u"persona_tags"_s), 1);
        stage.call("updatePersona", uuid, u"Number One"_s, u"Calm."_s);
        QCOMPARE(stage.count(u"persona_tags"_s), 0);
    }
};

void TestMetaObject::a_class_has_its_methods_in_their_order_and_nothing_else_data()
{
    QTest::addColumn<const QMetaObject *>("meta");
    QTest::addColumn<QString>("base");
    QTest::addColumn<QStringList>("methods");
    QTest::addRow("MainWindow")
        << &MainWindow::staticMetaObject << u"QMainWindow"_s
        << QStringList{
               u"signal public void importRequested(QString path)"_s,
               u"slot private void newProject()"_s,
               u"slot private void openProject()"_s,
               u"slot private void saveProject()"_s,
               u"slot private void saveProjectAs()"_s,
               u"slot private void onImport()"_s,
               u"slot private void applyTagFilter()"_s,
               u"slot private void toggleCreated(bool checked)"_s,
               u"slot private void toggleModified(bool checked)"_s,
               u"slot private void showPreferences()"_s,
               u"slot private void showAbout()"_s,
               u"slot private void runSurvey()"_s,
               u"slot private void preambleChanged()"_s,
               u"slot private void postambleChanged()"_s,
               u"slot private void showConversation()"_s,
               u"slot private void attemptQuit()"_s,
               u"slot public void loadPack(QString path)"_s,
               u"slot public void loadProject()"_s,
               u"slot public void loadQuestions()"_s,
               u"slot public void loadResults()"_s,
               u"slot public void importPack(QString path)"_s,
               u"slot public bool openProjectFromFile(QString path)"_s,
               u"slot public bool saveProjectToFile(QString path)"_s,
               u"slot public void insertQuestion(QString prompt, QString type, bool reasoning, QString labels)"_s,
               u"short of slot public void insertQuestion(QString prompt, QString type, bool reasoning)"_s,
               u"slot public void updateQuestion(int id, QString prompt, QString type, bool reasoning, QString labels)"_s,
               u"short of slot public void updateQuestion(int id, QString prompt, QString type, bool reasoning)"_s,
               u"slot public void insertPersona(QString name, QString description, QString tags)"_s,
               u"short of slot public void insertPersona(QString name, QString description)"_s,
               u"slot public void updatePersona(QString uuid, QString name, QString description, QString tags)"_s,
               u"short of slot public void updatePersona(QString uuid, QString name, QString description)"_s,
               u"slot public bool exportPackToFile(QString path)"_s,
               u"slot private void exportPack()"_s,
               u"slot private void newPersona()"_s,
               u"slot private void copyPersona()"_s,
               u"slot private void deletePersona()"_s,
               u"slot private void editPersona(int row, int column)"_s,
               u"slot private void editQuestion(int row)"_s,
           };
    QTest::addRow("SurveyRunner") << &SurveyRunner::staticMetaObject << u"QObject"_s
                                  << QStringList{u"signal public void finished()"_s,
                                                 u"slot private void handleAnswer(QString text)"_s,
                                                 u"slot private void handleError(QString err)"_s};
    QTest::addRow("ChatRequester") << &ChatRequester::staticMetaObject << u"QObject"_s
                                   << QStringList{u"signal public void responseReceived(QString text)"_s,
                                                  u"signal public void requestFailed(QString err)"_s,
                                                  u"signal public void requestSent(QString payload)"_s,
                                                  u"signal public void rawResponse(QString payload)"_s,
                                                  u"slot private void finished()"_s,
                                                  u"slot private void handleSslErrors(QList<QSslError> errors)"_s};
    QTest::addRow("PreferencesDialog") << &PreferencesDialog::staticMetaObject << u"QDialog"_s
                                       << QStringList(u"slot private void accept()"_s);
    QTest::addRow("ChatLogWindow") << &ChatLogWindow::staticMetaObject << u"QDialog"_s << QStringList();
}

ORRINET_TEST(TestMetaObject)
#include "tst_metaobject.moc"
