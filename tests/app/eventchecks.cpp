#include "tests/app/eventchecks.h"

#include "tests/app/eventviews.h"
#include "tests/support/gridtwin.h"
#include "tests/support/messagelog.h"
#include "tests/support/sidedatabase.h"
#include "tests/support/surveystage.h"

#include <QAction>
#include <QComboBox>
#include <QGroupBox>
#include <QMenuBar>
#include <QPushButton>
#include <QSqlTableModel>
#include <QTableWidget>

using namespace Qt::StringLiterals;

static QStringList rowsOf(Stage &stage, const QString &table)
{
    return literals(stage.database(), u"SELECT * FROM %1 ORDER BY rowid"_s.arg(table));
}

EventChecks::EventChecks(SurveyStage &surveyStage, MessageLog &messageLog)
    : stage(surveyStage)
    , messages(messageLog)
{
}

EventChecks::~EventChecks() = default;

void EventChecks::complain(const QString &what)
{
    if (firstComplaint.isEmpty())
        firstComplaint = what;
}

void EventChecks::compare(const QString &what, const QStringList &found, const QStringList &wanted)
{
    if (found != wanted)
        complain(u"%1:\n  %2\nand not\n  %3"_s.arg(what, found.join("\n  "_L1), wanted.join("\n  "_L1)));
}

void EventChecks::windowMade()
{
    expected = {.surveyErrors = expected.surveyErrors};
    known.clear();
    for (const QString &table : projectTables())
        known.insert(table, rowsOf(stage, table));
    filter = u"All"_s;
    twin = std::make_unique<GridTwin>(stage.window());
    readViews(Refreshed::Project);
    gridRefreshed();
    after({});
}

void EventChecks::after(const Effect &effect)
{
    checkTables(effect);
    checkWarnings(effect.warnings);
    readViews(effect.refreshed);
    checkDatabase();
    checkPersonas();
    checkQuestions();
    checkConversation();
    checkGrid();
    checkControls();
}

void EventChecks::checkTables(const Effect &effect)
{
    // A file that was no project has left no row, and the refresh of the edits stores what they show.
    QStringList &boilerplate = known[u"boilerplate"_s];
    if (effect.refreshed == Refreshed::Project && boilerplate.isEmpty())
        boilerplate = QStringList{defaultBoilerplate};
    for (const QString &table : projectTables()) {
        const QStringList rows = rowsOf(stage, table);
        // An editor that was open may have been left since, which writes its cell.
        const bool editedInPlace = cellEditorOpen && table == "questions"_L1;
        if (editedInPlace && rows != known.value(table)) {
            expected.sorted = false;
            expected.dense = expected.dense && isDense(stage);
        } else if (!effect.tables.contains(table)) {
            compare(u"the table "_s + table, rows, known.value(table));
        }
        known.insert(table, rows);
    }
    cellEditorOpen = hasCellEditor(questionView(stage));
}

void EventChecks::answerStored(const QVariantList &values)
{
    const QStringList rows = rowsOf(stage, u"responses"_s);
    QStringList &before = known[u"responses"_s];
    if (rows.size() != before.size() + 1 || rows.first(before.size()) != before)
        compare(u"the answers after a new one"_s, rows, before);
    before = rows;
    const Rows stored = stage.rows(u"SELECT persona_uuid,question_id,text_answer,numeric_answer,json_answer FROM "
                                   "responses WHERE id=(SELECT MAX(id) FROM responses)"_s);
    compare(u"the new answer"_s, texts(stored), texts({values}));
    expected.dirty = true;
    gridRefreshed();
}

void EventChecks::gridRefreshed()
{
    twin->refresh(stage.database());
    gridAsBuilt = true;
    checkGrid();
}

void EventChecks::checkDatabase()
{
    if (expected.dense && !isDense(stage))
        complain(u"the questions are numbered "_s +
                 stage.column(u"SELECT order_num FROM questions ORDER BY order_num"_s).join(u' '));
    const QStringList connections = QSqlDatabase::connectionNames();
    compare(u"the connections"_s, connections, {u"project"_s});
    QStringList attached;
    for (const Rows all = stage.rows(u"PRAGMA database_list"_s); const QVariantList &row : all)
        attached << row.at(1).toString();
    attached.removeAll(u"temp"_s);
    compare(u"the databases"_s, attached, {u"main"_s});
    // What SQLite says where no statement and no transaction is open, so that a file could be written.
    const QString refused = stage.refusal(u"VACUUM INTO NULL"_s);
    if (!refused.startsWith("non-text filename"_L1))
        complain(u"the project could not be saved now: "_s + refused);
}

void EventChecks::checkWarnings(const QStringList &wanted)
{
    QStringList warnings = messages.warnings().sliced(warningsSeen);
    warningsSeen += warnings.size();
    const auto errors = warnings.removeIf([](const QString &text) { return text.startsWith("survey error: "_L1); });
    if (errors != std::exchange(expected.surveyErrors, 0))
        complain(u"%1 warnings of failed requests"_s.arg(errors));
    bool same = warnings.size() == wanted.size();
    for (qsizetype index = 0; same && index < wanted.size(); ++index)
        same = warnings.at(index).startsWith(wanted.at(index));
    if (!same)
        compare(u"the warnings"_s, warnings, wanted);
}

void EventChecks::readViews(Refreshed refreshed)
{
    if (refreshed == Refreshed::Pack)
        readPack();
    if (refreshed == Refreshed::Project) {
        readPersonas(stage);
        personaChooser = wantedPersonas(stage);
    }
    if (refreshed >= Refreshed::Questions) {
        questionChooser = wantedQuestions(stage);
        conversationShown = stage.count(u"questions"_s) > 0;
        expected.hasQuestions = true;
    }
    if (refreshed >= Refreshed::QuestionList && refreshed != Refreshed::Grid)
        expected.sorted = true;
    if (refreshed >= Refreshed::Grid)
        gridRefreshed();
}

/// The former filter goes into the statement, even where the refilled chooser falls back to its first entry.
void EventChecks::readPersonas(Sql &source)
{
    personas = personaRows(source, filter);
    tags = QStringList{u"All"_s} + source.column(u"SELECT name FROM tags ORDER BY name"_s);
    if (!tags.contains(filter))
        filter = tags.first();
    personasAsBuilt = true;
}

void EventChecks::readPack()
{
    SideDatabase pack(expected.packPath);
    if (pack.isOpen())
        readPersonas(pack);
    else
        personas.clear();
    personasAsBuilt = true;
}

void EventChecks::checkPersonas()
{
    if (personasAsBuilt)
        compare(u"the persona list"_s, shownPersonaRows(stage), personas);
    compare(u"the tag filter"_s, items(tagFilter(stage)), tags);
    compare(u"the chosen tag"_s, {tagFilter(stage)->currentText()}, {filter});
    const std::pair<int, QString> columns[] = {{4, u"Show Created"_s}, {5, u"Show Modified"_s}};
    for (const auto &[column, entry] : columns) {
        if (personaTable(stage)->isColumnHidden(column) == stage.action(entry)->isChecked())
            complain(entry + u" and its column"_s);
    }
}

void EventChecks::checkQuestions()
{
    if ((questionModel(stage) != nullptr) != expected.hasQuestions)
        complain(u"the question list has a model or has none"_s);
    QStringList shown = shownQuestionRows(stage);
    QStringList wanted = questionRows(stage);
    if (!expected.sorted) {
        shown.sort();
        wanted.sort();
    }
    compare(u"the question list"_s, shown, wanted);
}

void EventChecks::checkConversation()
{
    const ConversationBox box(stage);
    compare(u"the persona chooser"_s, entries(box.persona), personaChooser);
    compare(u"the question chooser"_s, entries(box.question), questionChooser);
    if (box.group->isHidden() == conversationShown)
        complain(u"the conversation box is hidden or shown"_s);
}

void EventChecks::checkGrid()
{
    QTableWidget *grid = resultsTable(stage);
    QTableWidget *wanted = twin->table();
    if (!gridAsBuilt)
        return;
    if (grid->rowCount() != wanted->rowCount() || grid->columnCount() != wanted->columnCount())
        complain(u"the grid has another size"_s);
    else if (const QString item = differentItem(grid, wanted); !item.isEmpty())
        complain(u"the grid differs in "_s + item);
}

void EventChecks::checkControls()
{
    const QPushButton *button = stage.find<QPushButton>(u"runSurveyButton"_s);
    for (const auto menus = stage.window()->menuBar()->actions(); const QAction *menu : menus) {
        for (const auto all = menu->menu()->actions(); const QAction *entry : all) {
            const bool enabled = entry != stage.runEntry() || !expected.running;
            if (entry->isEnabled() != enabled)
                complain(u"the entry %1 is enabled or not"_s.arg(entry->text()));
        }
    }
    if (button->isEnabled() == expected.running)
        complain(u"the button is enabled or not"_s);
    if (stage.window()->windowTitle() != QString() || !stage.window()->isVisible())
        complain(u"the window has a title or is hidden"_s);
    if (stage.endpoint.mostInFlight() > 1)
        complain(u"two requests were in flight"_s);
}
