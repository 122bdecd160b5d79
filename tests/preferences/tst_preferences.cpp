// The dialog of the preferences, and what it stores under three keys.

#include "preferences/preferencesdialog.h"
#include "survey/chatrequester.h"
#include "tests/preferences/preferencesbox.h"
#include "tests/support/entries.h"
#include "tests/support/shown.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/testcase.h"

#include <QDialogButtonBox>
#include <QFile>
#include <QFormLayout>
#include <QLabel>
#include <QSettings>
#include <QSignalSpy>
#include <QTableWidget>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {

QStringList absent()
{
    return {u"absent"_s, u"absent"_s, u"absent"_s};
}

QStringList defaults()
{
    return {u""_s, u"gpt-4.1"_s, u"gpt-4.1-mini"_s};
}

QStringList someTexts()
{
    return {u"key"_s, u"large"_s, u"small"_s};
}

using Way = std::function<void(QDialog *)>;

/// What is stored under the three keys, with a mark for an absent one.
QStringList storedPreferences()
{
    const QSettings settings;
    QStringList texts;
    for (const auto key : {"openai/api_key"_L1, "models/persona"_L1, "models/adjudicator"_L1})
        texts.append(settings.contains(key) ? settings.value(key).toString() : u"absent"_s);
    return texts;
}

QStringList shownPreferences(Stage &stage)
{
    QStringList texts;
    inPreferences(stage, [&texts](QDialog *dialog) {
        for (const auto fields = preferenceFields(dialog); const QLineEdit *field : fields)
            texts.append(field->text());
    });
    return texts;
}

bool acceptPreferences(Stage &stage)
{
    return inPreferences(stage, [](QDialog *dialog) { QVERIFY(pressButton(dialog, u"OK"_s)); });
}

} // namespace

class TestPreferences : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void dialog_is_a_form_of_three_fields_and_two_buttons()
    {
        Stage stage;
        QVERIFY(inPreferences(stage, [&stage](QDialog *dialog) {
            QCOMPARE(dialog->parent(), stage.window());
            QVERIFY(dialog->isModal());
            QVERIFY(qobject_cast<PreferencesDialog *>(dialog) != nullptr);
            QCOMPARE(dialog->windowTitle(), u"Preferences"_s);
            const auto *form = qobject_cast<QFormLayout *>(dialog->layout());
            QVERIFY(form != nullptr);
            QCOMPARE(form->rowCount(), 4);
            QStringList rows;
            for (int row = 0; row < 3; ++row) {
                auto *edit = qobject_cast<QLineEdit *>(form->itemAt(row, QFormLayout::FieldRole)->widget());
                QVERIFY(edit != nullptr);
                rows.append(qobject_cast<QLabel *>(form->labelForField(edit))->text() + u':' + edit->objectName());
                QCOMPARE(edit->parent(), dialog);
                // The key is not hidden either.
                QCOMPARE(edit->echoMode(), QLineEdit::Normal);
                QVERIFY(edit->isEnabled() && !edit->isReadOnly());
            }
            QCOMPARE(rows, QStringList({u"OpenAI API Key:apiKeyEdit"_s, u"Persona Model:personaModelEdit"_s,
                                        u"Adjudicator Model:adjudicatorModelEdit"_s}));

            QVERIFY(form->itemAt(3, QFormLayout::LabelRole) == nullptr);
            const auto *buttons = qobject_cast<QDialogButtonBox *>(form->itemAt(3, QFormLayout::FieldRole)->widget());
            QVERIFY(buttons != nullptr);
            QCOMPARE(buttons->standardButtons(), QDialogButtonBox::Ok | QDialogButtonBox::Cancel);
            QCOMPARE(buttons->parent(), dialog);
        }));
        // It is gone when it is closed.
        QVERIFY(stage.window()->findChildren<QDialog *>().isEmpty());
    }

    void first_start_shows_the_defaults_and_ok_stores_them()
    {
        Stage stage;
        QCOMPARE(shownPreferences(stage), defaults());
        QCOMPARE(storedPreferences(), absent());
        QVERIFY(acceptPreferences(stage));
        QCOMPARE(storedPreferences(), defaults());
        QCOMPARE(QSettings().allKeys().size(), 3);
    }

    void ok_stores_what_stands_in_the_fields_data()
    {
        QTest::addColumn<QStringList>("entered");
        QTest::addColumn<QStringList>("kept");
        const auto add = [](const char *name, const QStringList &entered, const QStringList &kept) {
            QTest::addRow("%s", name) << entered << kept;
        };
        add("three texts", someTexts(), someTexts());
        add("both models cleared", {u"key"_s, u""_s, u""_s}, {u"key"_s, u"gpt-4.1"_s, u"gpt-4.1-mini"_s});
        add("persona model cleared", {u"key"_s, u""_s, u"small"_s}, {u"key"_s, u"gpt-4.1"_s, u"small"_s});
        add("adjudicator model cleared", {u"key"_s, u"large"_s, u""_s}, {u"key"_s, u"large"_s, u"gpt-4.1-mini"_s});
        for (const QStringList &texts : {QStringList{u""_s, u"large"_s, u"small"_s},
                                         {u"  key "_s, u"large"_s, u"small"_s},
                                         {u"key"_s, u" "_s, u"   "_s},
                                         {u"a=b;c,\"d\"\\%20"_s, u"@Variant"_s, u"[x]"_s}})
            add(qUtf8Printable(u"kept as typed: "_s + texts.join(u'|')), texts, texts);
    }

    void ok_stores_what_stands_in_the_fields()
    {
        QFETCH(QStringList, entered);
        QFETCH(QStringList, kept);
        Stage stage;
        QVERIFY(storePreferences(stage, {u"old key"_s, u"old"_s, u"older"_s}));
        QVERIFY(storePreferences(stage, entered));
        QCOMPARE(storedPreferences(), kept);
        QCOMPARE(shownPreferences(stage), kept);
    }

    void leaving_without_ok_writes_nothing_data()
    {
        QTest::addColumn<Way>("way");
        QTest::addRow("Cancel") << Way([](QDialog *dialog) { QVERIFY(pressButton(dialog, u"Cancel"_s)); });
        QTest::addRow("Escape") << Way([](QDialog *dialog) { QTest::keyClick(dialog, Qt::Key_Escape); });
        QTest::addRow("closed") << Way([](QDialog *dialog) { dialog->close(); });
    }

    void leaving_without_ok_writes_nothing()
    {
        QFETCH(Way, way);
        Stage stage;
        QVERIFY(inPreferences(stage, [&way](QDialog *dialog) {
            typePreferences(dialog, someTexts());
            way(dialog);
            QVERIFY(!dialog->isVisible());
        }));
        QCOMPARE(storedPreferences(), absent());
        QVERIFY(!QFile::exists(QSettings().fileName()));
        QVERIFY(!QFile::exists(stage.path(u".config/Orrinet"_s)));
    }

    void return_key_stores()
    {
        Stage stage;
        QVERIFY(inPreferences(stage, [](QDialog *dialog) {
            typePreferences(dialog, someTexts());
            QTest::keyClick(preferenceFields(dialog).constFirst(), Qt::Key_Return);
        }));
        QCOMPARE(storedPreferences(), someTexts());
    }

    void erased_key_makes_the_next_request_fail()
    {
        Stage stage;
        Stage::setSetting(u"openai/api_key"_s, u"key"_s);
        QVERIFY(storePreferences(stage, {u""_s, u"large"_s, u"small"_s}));
        ChatRequester requester;
        const QSignalSpy failed(&requester, &ChatRequester::requestFailed);
        requester.send({}, u"large"_s, {}, {}, {}, -1);
        QCOMPARE(failed, Rows({{u"OPENAI_API_KEY not set"_s}}));
    }

    void empty_model_from_outside_is_shown_as_it_is()
    {
        Stage stage;
        Stage::setSetting(u"models/persona"_s, u""_s);
        QCOMPARE(shownPreferences(stage), QStringList({u""_s, u""_s, u"gpt-4.1-mini"_s}));
        QCOMPARE(storedPreferences(), QStringList({u"absent"_s, u""_s, u"absent"_s}));
        // OK then takes the empty field for what it is.
        QVERIFY(acceptPreferences(stage));
        QCOMPARE(storedPreferences(), defaults());
    }

    void settings_lie_under_the_names_of_the_program()
    {
        Stage stage;
        QVERIFY(storePreferences(stage, someTexts()));
        const QSettings settings(QSettings::defaultFormat(), QSettings::UserScope, u"Orrinet"_s, u"Orrinet"_s);
        QStringList keys = settings.allKeys();
        keys.sort();
        QCOMPARE(keys, QStringList({u"models/adjudicator"_s, u"models/persona"_s, u"openai/api_key"_s}));
        QVERIFY(settings.fileName().startsWith(stage.path(u".config/Orrinet/Orrinet."_s)));
    }

    void test_mode_opens_no_dialog_data()
    {
        QTest::addColumn<QByteArray>("value");
        QTest::addRow("one") << "1"_ba;
        QTest::addRow("nought") << "0"_ba;
        QTest::addRow("empty") << ""_ba;
    }

    void test_mode_opens_no_dialog()
    {
        QFETCH(QByteArray, value);
        Stage stage;
        stage.window();
        qputenv("ORRINET_TEST_MODE", value);
        QVERIFY(!acceptPreferences(stage));
        QVERIFY(!QFile::exists(QSettings().fileName()));
        // Asked anew each time.
        Stage::setTestMode(false);
        QVERIFY(acceptPreferences(stage));
    }

    void project_is_neither_changed_nor_refreshed()
    {
        Stage stage;
        QVERIFY(enter(stage, PersonaEntered{u"one"_s, u"Number One"_s}));
        QVERIFY(storePreferences(stage, someTexts()));
        QCOMPARE(personaTable(stage)->rowCount(), 0);
        QVERIFY(!stage.asksBeforeClosing());
    }

    void preferences_are_no_part_of_a_project()
    {
        Stage stage;
        const QStringList texts = {u"a secret of no project"_s, u"large"_s, u"small"_s};
        QVERIFY(storePreferences(stage, texts));
        QVERIFY(stage.result("saveProjectToFile", stage.path(u"saved.ormt"_s)));
        const QByteArray saved = readBytes(stage.path(u"saved.ormt"_s));
        QVERIFY(saved.startsWith("SQLite format 3"));
        QVERIFY(!saved.contains("a secret"));
        stage.call("newProject");
        QCOMPARE(storedPreferences(), texts);
    }
};

ORRINET_TEST(TestPreferences)
#include "tst_preferences.moc"
