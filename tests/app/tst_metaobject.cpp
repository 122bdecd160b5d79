#include "app/mainwindow.h"
#include "inspect/chatlogwindow.h"
#include "preferences/preferencesdialog.h"
#include "survey/chatrequester.h"
#include "survey/surveyrunner.h"
#include "tests/support/stage.h"

#include <QMetaMethod>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

constexpr auto signal = QMetaMethod::Signal;
constexpr auto slot = QMetaMethod::Slot;
constexpr auto privately = QMetaMethod::Private;
constexpr auto publicly = QMetaMethod::Public;

const QMetaObject *metaObjectOf(const QString &name)
{
    for (const QMetaObject *meta :
         {&MainWindow::staticMetaObject, &SurveyRunner::staticMetaObject, &ChatRequester::staticMetaObject,
          &PreferencesDialog::staticMetaObject, &ChatLogWindow::staticMetaObject}) {
        if (name == QLatin1StringView(meta->className()))
            return meta;
    }
    return nullptr;
}

void addMethod(const char *className, int index, QMetaMethod::MethodType kind, QMetaMethod::Access access,
               const char *returned, const char *signature, const QByteArrayList &parameters, bool clone = false)
{
    QTest::addRow("%s %d", className, index) << QString::fromLatin1(className) << index << kind << access
                                             << QByteArray(returned) << QByteArray(signature) << parameters << clone;
}

void addWindowMethods()
{
    int index = 0;
    const auto add = [&index](QMetaMethod::Access access, const char *returned, const char *signature,
                              const QByteArrayList &parameters = {}, bool clone = false) {
        addMethod("MainWindow", index, index == 0 ? signal : slot, access, returned, signature, parameters, clone);
        ++index;
    };
    add(publicly, "void", "importRequested(QString)", {"path"});
    add(privately, "void", "newProject()");
    add(privately, "void", "openProject()");
    add(privately, "void", "saveProject()");
    add(privately, "void", "saveProjectAs()");
    add(privately, "void", "onImport()");
    add(privately, "void", "applyTagFilter()");
    add(privately, "void", "toggleCreated(bool)", {"checked"});
    add(privately, "void", "toggleModified(bool)", {"checked"});
    add(privately, "void", "showPreferences()");
    add(privately, "void", "showAbout()");
    add(privately, "void", "runSurvey()");
    add(privately, "void", "preambleChanged()");
    add(privately, "void", "postambleChanged()");
    add(privately, "void", "showConversation()");
    add(privately, "void", "attemptQuit()");
    add(publicly, "void", "loadPack(QString)", {"path"});
    add(publicly, "void", "loadProject()");
    add(publicly, "void", "loadQuestions()");
    add(publicly, "void", "loadResults()");
    add(publicly, "void", "importPack(QString)", {"path"});
    add(publicly, "bool", "openProjectFromFile(QString)", {"path"});
    add(publicly, "bool", "saveProjectToFile(QString)", {"path"});
    const QByteArrayList question = {"prompt", "type", "reasoning", "labels"};
    add(publicly, "void", "insertQuestion(QString,QString,bool,QString)", question);
    add(publicly, "void", "insertQuestion(QString,QString,bool)", question.first(3), true);
    const QByteArrayList changed = QByteArrayList{"id"} + question;
    add(publicly, "void", "updateQuestion(int,QString,QString,bool,QString)", changed);
    add(publicly, "void", "updateQuestion(int,QString,QString,bool)", changed.first(4), true);
    add(publicly, "void", "insertPersona(QString,QString,QString)", {"name", "description", "tags"});
    add(publicly, "void", "insertPersona(QString,QString)", {"name", "description"}, true);
    add(publicly, "void", "updatePersona(QString,QString,QString,QString)", {"uuid", "name", "description", "tags"});
    add(publicly, "void", "updatePersona(QString,QString,QString)", {"uuid", "name", "description"}, true);
    add(publicly, "bool", "exportPackToFile(QString)", {"path"});
    add(privately, "void", "exportPack()");
    add(privately, "void", "newPersona()");
    add(privately, "void", "copyPersona()");
    add(privately, "void", "deletePersona()");
    add(privately, "void", "editPersona(int,int)", {"row", "column"});
    add(privately, "void", "editQuestion(int)", {"row"});
}

} // namespace

class TestMetaObject : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void a_class_has_its_own_methods_and_nothing_else_data()
    {
        QTest::addColumn<QString>("base");
        QTest::addColumn<int>("methods");
        QTest::addRow("MainWindow") << u"QMainWindow"_s << 38;
        QTest::addRow("SurveyRunner") << u"QObject"_s << 3;
        QTest::addRow("ChatRequester") << u"QObject"_s << 6;
        QTest::addRow("PreferencesDialog") << u"QDialog"_s << 1;
        QTest::addRow("ChatLogWindow") << u"QDialog"_s << 0;
    }

    void a_class_has_its_own_methods_and_nothing_else()
    {
        QFETCH(QString, base);
        QFETCH(int, methods);
        const QMetaObject *meta = metaObjectOf(QString::fromLatin1(QTest::currentDataTag()));
        QVERIFY(meta != nullptr);
        QCOMPARE(QString::fromLatin1(meta->superClass()->className()), base);
        QCOMPARE(meta->methodCount() - meta->methodOffset(), methods);
        QCOMPARE(meta->propertyCount(), meta->superClass()->propertyCount());
        QCOMPARE(meta->enumeratorCount(), meta->superClass()->enumeratorCount());
        QCOMPARE(meta->classInfoCount(), meta->superClass()->classInfoCount());
        QCOMPARE(meta->constructorCount(), 0);
    }

    void a_method_keeps_its_place_and_its_signature_data()
    {
        QTest::addColumn<QString>("className");
        QTest::addColumn<int>("index");
        QTest::addColumn<QMetaMethod::MethodType>("kind");
        QTest::addColumn<QMetaMethod::Access>("access");
        QTest::addColumn<QByteArray>("returned");
        QTest::addColumn<QByteArray>("signature");
        QTest::addColumn<QByteArrayList>("parameters");
        QTest::addColumn<bool>("clone");

        addWindowMethods();
        addMethod("SurveyRunner", 0, signal, publicly, "void", "finished()", {});
        addMethod("SurveyRunner", 1, slot, privately, "void", "handleAnswer(QString)", {"text"});
        addMethod("SurveyRunner", 2, slot, privately, "void", "handleError(QString)", {"err"});
        addMethod("ChatRequester", 0, signal, publicly, "void", "responseReceived(QString)", {"text"});
        addMethod("ChatRequester", 1, signal, publicly, "void", "requestFailed(QString)", {"err"});
        addMethod("ChatRequester", 2, signal, publicly, "void", "requestSent(QString)", {"payload"});
        addMethod("ChatRequester", 3, signal, publicly, "void", "rawResponse(QString)", {"payload"});
        addMethod("ChatRequester", 4, slot, privately, "void", "finished()", {});
        addMethod("ChatRequester", 5, slot, privately, "void", "handleSslErrors(QList<QSslError>)", {"errors"});
        addMethod("PreferencesDialog", 0, slot, privately, "void", "accept()", {});
    }

    void a_method_keeps_its_place_and_its_signature()
    {
        QFETCH(QString, className);
        QFETCH(int, index);
        const QMetaObject *meta = metaObjectOf(className);
        QVERIFY(meta != nullptr);
        QCOMPARE_LT(index, meta->methodCount() - meta->methodOffset());

        const QMetaMethod method = meta->method(meta->methodOffset() + index);
        QCOMPARE(method.relativeMethodIndex(), index);
        QTEST(method.methodType(), "kind");
        QTEST(method.access(), "access");
        QTEST(QByteArray(method.typeName()), "returned");
        QTEST(method.methodSignature(), "signature");
        QTEST(method.parameterNames(), "parameters");
        QTEST((method.attributes() & QMetaMethod::Cloned) != 0, "clone");
        QCOMPARE(method.revision(), 0);
    }

    void a_question_without_labels_stores_NULL()
    {
        Stage stage;
        QVERIFY(stage.call("insertQuestion", u"Why?"_s, u"text"_s, false));
        QCOMPARE(stage.rows(u"SELECT labels FROM questions"_s).size(), 1);
        QVERIFY(stage.value(u"SELECT labels IS NULL FROM questions"_s).toBool());

        QVERIFY(stage.call("updateQuestion", 1, u"Why?"_s, u"text"_s, false, u"[]"_s));
        QCOMPARE(stage.value(u"SELECT labels FROM questions"_s).toString(), u"[]"_s);
        QVERIFY(stage.call("updateQuestion", 1, u"Why?"_s, u"text"_s, false));
        QVERIFY(stage.value(u"SELECT labels IS NULL FROM questions"_s).toBool());
    }

    void a_persona_without_tags_bears_none()
    {
        Stage stage;
        QVERIFY(stage.call("insertPersona", u"Number One"_s, u"Calm."_s));
        QCOMPARE(stage.value(u"SELECT COUNT(*) FROM personas"_s).toInt(), 1);
        QCOMPARE(stage.value(u"SELECT COUNT(*) FROM persona_tags"_s).toInt(), 0);

        const QString uuid = stage.value(u"SELECT uuid FROM personas"_s).toString();
        QVERIFY(stage.call("updatePersona", uuid, u"Number One"_s, u"Calm."_s, u"first"_s));
        QCOMPARE(stage.value(u"SELECT COUNT(*) FROM persona_tags"_s).toInt(), 1);
        QVERIFY(stage.call("updatePersona", uuid, u"Number One"_s, u"Calm."_s));
        QCOMPARE(stage.value(u"SELECT COUNT(*) FROM persona_tags"_s).toInt(), 0);
    }
};

QTEST_MAIN(TestMetaObject)
#include "tst_metaobject.moc"
