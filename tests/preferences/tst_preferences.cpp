#include "preferences/preferencesdialog.h"
#include "survey/chatrequester.h"
#include "tests/preferences/preferencesbox.h"

#include <QDialogButtonBox>
#include <QFile>
#include <QFormLayout>
#include <QLabel>
#include <QSettings>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QStringList defaults()
{
    return {QString(), u"gpt-4.1"_s, u"gpt-4.1-mini"_s};
}

/// What is stored under the three keys, with a mark for an absent one.
QStringList stored()
{
    const QSettings settings;
    QStringList texts;
    for (const auto key : {"openai/api_key"_L1, "models/persona"_L1, "models/adjudicator"_L1})
        texts.append(settings.contains(key) ? settings.value(key).toString() : u"absent"_s);
    return texts;
}

QStringList shown(Stage &stage)
{
    QStringList texts;
    inPreferences(stage, [&texts](QDialog *dialog) {
        texts = fields(dialog);
        dialog->reject();
    });
    return texts;
}

} // namespace

using Way = std::function<void(QDialog *)>;

class TestPreferences : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void dialog_is_a_form_of_three_fields_and_two_buttons();
    void field_shows_its_text_in_the_clear_data();
    void field_shows_its_text_in_the_clear();
    void dialog_belongs_to_the_window_and_lives_while_it_is_open();
    void first_start_shows_the_defaults();
    void stored_texts_are_shown();
    void ok_stores_what_stands_in_the_fields_data();
    void ok_stores_what_stands_in_the_fields();
    void ok_on_first_start_writes_all_three_keys();
    void leaving_without_ok_writes_nothing_data();
    void leaving_without_ok_writes_nothing();
    void leaving_without_ok_keeps_what_was_stored();
    void return_key_stores();
    void erased_key_makes_the_next_request_fail();
    void empty_model_from_outside_is_shown_as_it_is();
    void settings_lie_under_the_names_of_the_program();
    void test_mode_opens_no_dialog_data();
    void test_mode_opens_no_dialog();
    void project_is_neither_changed_nor_refreshed();
    void preferences_are_no_part_of_a_project();
};

void TestPreferences::dialog_is_a_form_of_three_fields_and_two_buttons()
{
    Stage stage;
    QVERIFY(inPreferences(stage, [](QDialog *dialog) {
        const auto close = qScopeGuard([dialog] { dialog->reject(); });
        QVERIFY(qobject_cast<PreferencesDialog *>(dialog) != nullptr);
        QCOMPARE(dialog->windowTitle(), u"Preferences"_s);
        const auto *form = qobject_cast<QFormLayout *>(dialog->layout());
        QVERIFY(form != nullptr);
        QCOMPARE(form->rowCount(), 4);
        QStringList rows;
        for (int row = 0; row < 3; ++row) {
            QWidget *edit = form->itemAt(row, QFormLayout::FieldRole)->widget();
            QVERIFY(qobject_cast<QLineEdit *>(edit) != nullptr);
            rows.append(qobject_cast<QLabel *>(form->labelForField(edit))->text() + u':' + edit->objectName());
        }
        const QStringList expected = {u"OpenAI API Key:apiKeyEdit"_s, u"Persona Model:personaModelEdit"_s,
                                      u"Adjudicator Model:adjudicatorModelEdit"_s};
        QCOMPARE(rows, expected);

        auto *buttons = dialog->findChild<QDialogButtonBox *>();
        QCOMPARE(buttons->standardButtons(), QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
        QCOMPARE(buttons->parent(), dialog);
        int row = -1;
        QFormLayout::ItemRole role = QFormLayout::LabelRole;
        form->getWidgetPosition(buttons, &row, &role);
        QCOMPARE(row, 3);
        QVERIFY(form->itemAt(3, QFormLayout::LabelRole) == nullptr);
    }));
}

void TestPreferences::field_shows_its_text_in_the_clear_data()
{
    QTest::addColumn<int>("nth");
    QTest::addRow("apiKeyEdit") << 0;
    QTest::addRow("personaModelEdit") << 1;
    QTest::addRow("adjudicatorModelEdit") << 2;
}

void TestPreferences::field_shows_its_text_in_the_clear()
{
    QFETCH(int, nth);
    Stage stage;
    QVERIFY(inPreferences(stage, [nth](QDialog *dialog) {
        const auto close = qScopeGuard([dialog] { dialog->reject(); });
        const auto children = dialog->findChildren<QLineEdit *>(Qt::FindDirectChildrenOnly);
        QCOMPARE(children.size(), 3);
        QCOMPARE(children.at(nth)->objectName(), QString::fromLatin1(QTest::currentDataTag()));
        QCOMPARE(children.at(nth)->echoMode(), QLineEdit::Normal);
        QVERIFY(children.at(nth)->isEnabled() && !children.at(nth)->isReadOnly());
    }));
}

void TestPreferences::dialog_belongs_to_the_window_and_lives_while_it_is_open()
{
    Stage stage;
    QVERIFY(inPreferences(stage, [&stage](QDialog *dialog) {
        const auto close = qScopeGuard([dialog] { dialog->reject(); });
        QCOMPARE(dialog->parent(), stage.window());
        QVERIFY(dialog->isModal());
    }));
    QVERIFY(stage.window()->findChildren<QDialog *>().isEmpty());
}

void TestPreferences::first_start_shows_the_defaults()
{
    Stage stage;
    QCOMPARE(shown(stage), defaults());
    QCOMPARE(stored(), (QStringList{u"absent"_s, u"absent"_s, u"absent"_s}));
}

void TestPreferences::stored_texts_are_shown()
{
    Stage stage;
    Stage::setSetting(u"openai/api_key"_s, u" key "_s);
    Stage::setSetting(u"models/persona"_s, u"large"_s);
    Stage::setSetting(u"models/adjudicator"_s, u"small"_s);
    QCOMPARE(shown(stage), (QStringList{u" key "_s, u"large"_s, u"small"_s}));
}

void TestPreferences::ok_stores_what_stands_in_the_fields_data()
{
    QTest::addColumn<QStringList>("entered");
    QTest::addColumn<QStringList>("kept");
    QTest::addRow("three texts") << QStringList{u"key"_s, u"large"_s, u"small"_s}
                                 << QStringList{u"key"_s, u"large"_s, u"small"_s};
    QTest::addRow("both models cleared") << QStringList{u"key"_s, QString(), QString()}
                                         << QStringList{u"key"_s, u"gpt-4.1"_s, u"gpt-4.1-mini"_s};
    QTest::addRow("persona model cleared")
        << QStringList{u"key"_s, QString(), u"small"_s} << QStringList{u"key"_s, u"gpt-4.1"_s, u"small"_s};
    QTest::addRow("adjudicator model cleared")
        << QStringList{u"key"_s, u"large"_s, QString()} << QStringList{u"key"_s, u"large"_s, u"gpt-4.1-mini"_s};
    QTest::addRow("key cleared") << QStringList{QString(), u"large"_s, u"small"_s}
                                 << QStringList{QString(), u"large"_s, u"small"_s};
    QTest::addRow("blanks around the key")
        << QStringList{u"  key "_s, u"large"_s, u"small"_s} << QStringList{u"  key "_s, u"large"_s, u"small"_s};
    QTest::addRow("models of blanks") << QStringList{u"key"_s, u" "_s, u"   "_s}
                                      << QStringList{u"key"_s, u" "_s, u"   "_s};
    QTest::addRow("marks of the file format") << QStringList{u"a=b;c,\"d\"\\%20"_s, u"@Variant"_s, u"[x]"_s}
                                              << QStringList{u"a=b;c,\"d\"\\%20"_s, u"@Variant"_s, u"[x]"_s};
}

void TestPreferences::ok_stores_what_stands_in_the_fields()
{
    QFETCH(QStringList, entered);
    QFETCH(QStringList, kept);
    Stage stage;
    QVERIFY(storePreferences(stage, {u"old key"_s, u"old"_s, u"older"_s}));
    QVERIFY(storePreferences(stage, entered));
    QCOMPARE(stored(), kept);
    QCOMPARE(shown(stage), kept);
}

void TestPreferences::ok_on_first_start_writes_all_three_keys()
{
    Stage stage;
    QVERIFY(inPreferences(stage, [](QDialog *dialog) { pressButton(dialog, u"OK"_s); }));
    QCOMPARE(stored(), defaults());
    QCOMPARE(QSettings().allKeys().size(), 3);
}

void TestPreferences::leaving_without_ok_writes_nothing_data()
{
    QTest::addColumn<Way>("way");
    QTest::addRow("Cancel") << Way([](QDialog *dialog) { pressButton(dialog, u"Cancel"_s); });
    QTest::addRow("Escape") << Way([](QDialog *dialog) { QTest::keyClick(dialog, Qt::Key_Escape); });
    QTest::addRow("closed") << Way([](QDialog *dialog) { dialog->close(); });
}

void TestPreferences::leaving_without_ok_writes_nothing()
{
    QFETCH(Way, way);
    Stage stage;
    QVERIFY(inPreferences(stage, [&way](QDialog *dialog) {
        enter(dialog, {u"key"_s, u"large"_s, u"small"_s});
        way(dialog);
    }));
    QCOMPARE(stored(), (QStringList{u"absent"_s, u"absent"_s, u"absent"_s}));
    QVERIFY(!QFile::exists(QSettings().fileName()));
    QVERIFY(!QFile::exists(stage.path(u".config/Orrinet"_s)));
}

void TestPreferences::leaving_without_ok_keeps_what_was_stored()
{
    Stage stage;
    const QStringList before = {u"key"_s, u"large"_s, u"small"_s};
    QVERIFY(storePreferences(stage, before));
    QVERIFY(inPreferences(stage, [](QDialog *dialog) {
        enter(dialog, {u"other"_s, QString(), QString()});
        pressButton(dialog, u"Cancel"_s);
    }));
    QCOMPARE(stored(), before);
}

void TestPreferences::return_key_stores()
{
    Stage stage;
    QVERIFY(inPreferences(stage, [](QDialog *dialog) {
        enter(dialog, {u"key"_s, u"large"_s, u"small"_s});
        QTest::keyClick(field(dialog, "apiKeyEdit"), Qt::Key_Return);
    }));
    QCOMPARE(stored(), (QStringList{u"key"_s, u"large"_s, u"small"_s}));
}

void TestPreferences::erased_key_makes_the_next_request_fail()
{
    Stage stage;
    Stage::setSetting(u"openai/api_key"_s, u"key"_s);
    QVERIFY(storePreferences(stage, {QString(), u"large"_s, u"small"_s}));
    ChatRequester requester;
    const QSignalSpy failed(&requester, &ChatRequester::requestFailed);
    requester.send({}, u"large"_s, {}, {}, {}, -1);
    const QList<QVariantList> once = {{u"OPENAI_API_KEY not set"_s}};
    QCOMPARE(failed, once);
}

void TestPreferences::empty_model_from_outside_is_shown_as_it_is()
{
    Stage stage;
    Stage::setSetting(u"models/persona"_s, QString(u""_s));
    QCOMPARE(shown(stage), (QStringList{QString(), QString(), u"gpt-4.1-mini"_s}));
    QCOMPARE(stored(), (QStringList{u"absent"_s, QString(), u"absent"_s}));
    // OK then takes the empty field for what it is.
    QVERIFY(inPreferences(stage, [](QDialog *dialog) { pressButton(dialog, u"OK"_s); }));
    QCOMPARE(stored(), defaults());
}

void TestPreferences::settings_lie_under_the_names_of_the_program()
{
    Stage stage;
    QVERIFY(storePreferences(stage, {u"key"_s, u"large"_s, u"small"_s}));
    const QSettings settings(QSettings::NativeFormat, QSettings::UserScope, u"Orrinet"_s, u"Orrinet"_s);
    QStringList keys = settings.allKeys();
    keys.sort();
    QCOMPARE(keys, (QStringList{u"models/adjudicator"_s, u"models/persona"_s, u"openai/api_key"_s}));
    QCOMPARE(settings.fileName(), stage.path(u".config/Orrinet/Orrinet.conf"_s));
}

void TestPreferences::test_mode_opens_no_dialog_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addRow("one") << "1"_ba;
    QTest::addRow("nought") << "0"_ba;
    QTest::addRow("empty") << QByteArray();
}

void TestPreferences::test_mode_opens_no_dialog()
{
    QFETCH(QByteArray, value);
    Stage stage;
    stage.window();
    qputenv("ORRINET_TEST_MODE", value);
    QVERIFY(!inPreferences(stage, [](QDialog *dialog) { dialog->accept(); }));
    QVERIFY(!QFile::exists(QSettings().fileName()));
    // Asked anew each time.
    Stage::setTestMode(false);
    QVERIFY(inPreferences(stage, [](QDialog *dialog) { dialog->reject(); }));
}

void TestPreferences::project_is_neither_changed_nor_refreshed()
{
    Stage stage;
    stage.window();
    stage.exec(u"INSERT INTO personas (uuid, name) VALUES ('one', 'Number One')"_s);
    QVERIFY(storePreferences(stage, {u"key"_s, u"large"_s, u"small"_s}));
    QCOMPARE(stage.find<QTableWidget>(u"personaTable"_s)->rowCount(), 0);
    QVERIFY(!stage.asksBeforeClosing());
}

void TestPreferences::preferences_are_no_part_of_a_project()
{
    Stage stage;
    const QStringList texts = {u"a secret of no project"_s, u"large"_s, u"small"_s};
    QVERIFY(storePreferences(stage, texts));
    QVERIFY(stage.result("saveProjectToFile", stage.path(u"saved.ormt"_s)));
    QFile file(stage.path(u"saved.ormt"_s));
    QVERIFY(file.open(QIODevice::ReadOnly));
    QVERIFY(!file.readAll().contains("a secret"));
    stage.call("newProject");
    QCOMPARE(stored(), texts);
}

QTEST_MAIN(TestPreferences)
#include "tst_preferences.moc"
