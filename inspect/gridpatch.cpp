#include "inspect/gridpatch.h"

#include "inspect/resultstable.h"
#include "project/textbytes.h"

#include <QEvent>
#include <QScopedValueRollback>
#include <QScrollBar>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>

using namespace Qt::StringLiterals;

GridPatch::GridPatch(ResultsTable *grid)
    : table(grid)
{
    watch();
}

/// Connects all by which a table can be touched from outside.
void GridPatch::watch()
{
    const QAbstractItemModel *model = table->model();
    connect(model, &QAbstractItemModel::dataChanged, this, &GridPatch::touch);
    connect(model, &QAbstractItemModel::headerDataChanged, this, &GridPatch::touch);
    connect(model, &QAbstractItemModel::layoutChanged, this, &GridPatch::touch);
    connect(model, &QAbstractItemModel::modelReset, this, &GridPatch::touch);
    connect(model, &QAbstractItemModel::rowsInserted, this, &GridPatch::touch);
    connect(model, &QAbstractItemModel::rowsRemoved, this, &GridPatch::touch);
    connect(model, &QAbstractItemModel::columnsInserted, this, &GridPatch::touch);
    connect(model, &QAbstractItemModel::columnsRemoved, this, &GridPatch::touch);
    connect(table->selectionModel(), &QItemSelectionModel::selectionChanged, this, &GridPatch::touch);
    connect(table->selectionModel(), &QItemSelectionModel::currentChanged, this, &GridPatch::touch);
    connect(table->verticalScrollBar(), &QScrollBar::valueChanged, this, &GridPatch::touch);
    connect(table->horizontalScrollBar(), &QScrollBar::valueChanged, this, &GridPatch::touch);
    connect(table->verticalHeader(), &QHeaderView::sectionResized, this, &GridPatch::touch);
    connect(table->verticalHeader(), &QHeaderView::sectionMoved, this, &GridPatch::touch);
    connect(table->horizontalHeader(), &QHeaderView::sectionMoved, this, &GridPatch::touch);
    for (QWidget *part :
         {static_cast<QWidget *>(table), table->viewport(), static_cast<QWidget *>(table->horizontalHeader()),
          static_cast<QWidget *>(table->verticalHeader())})
        part->installEventFilter(this);
}

bool GridPatch::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::ChildAdded: // an editor or a widget in a cell
    case QEvent::ChildRemoved:
    case QEvent::FontChange:
    case QEvent::StyleChange:
    case QEvent::LanguageChange:
    case QEvent::LayoutDirectionChange:
    case QEvent::DevicePixelRatioChange:
        touch();
        break;
    default:
        break;
    }
    return QObject::eventFilter(watched, event);
}

void GridPatch::touch()
{
    if (working)
        return;
    seen.reset();
    table->forgetSizes();
}

GridPatch::Rebuilding::Rebuilding(GridPatch &which)
    : patch(which)
{
    patch.touch();
    patch.working = true;
}

GridPatch::Rebuilding::~Rebuilding()
{
    // What was measured meanwhile were the sizes of a table half built.
    patch.table->forgetSizes();
    patch.working = false;
}

/// What shows in no signal: that a column was hidden or is to have another width than its contents', and that a cell is
/// being edited or dragged.
bool GridPatch::isUntouched() const
{
    const QHeaderView *header = table->horizontalHeader();
    if (header->sectionsHidden())
        return false;
    for (int section = 0; section < header->count(); ++section) {
        if (header->sectionResizeMode(section) != QHeaderView::ResizeToContents)
            return false;
    }
    return table->isAtRest();
}

/// Nothing where the tables are not such that what has been counted is all that can have happened to them.
std::optional<GridPatch::Fingerprint> GridPatch::fingerprint(const QSqlDatabase &database)
{
    QSqlQuery query(database);
    // Tables made by "CREATE TABLE ... AS" come with rows that nobody counted; SQLite notes them, and renamed ones,
    // in another form. A temporary table or view would stand before one of the project.
    const bool read =
        query.exec(u"SELECT total_changes(),(SELECT MAX(id) FROM responses),(SELECT COUNT(*) FROM responses),"
                   "(SELECT COUNT(*) FROM personas),(SELECT COUNT(*) FROM questions),"
                   "(SELECT group_concat(type||' '||name||' '||IFNULL(sql,''),';') FROM sqlite_master) "
                   "WHERE (SELECT COUNT(*) FROM sqlite_temp_master)=0 AND "
                   "(SELECT COUNT(*) FROM sqlite_master WHERE type='table' AND name IN ('personas','questions',"
                   "'responses') AND sql LIKE 'CREATE TABLE '||name||' (%')=3"_s) &&
        query.next();
    if (!read)
        return std::nullopt;
    return Fingerprint{.schema = query.value(5).toString(),
                       .changes = query.value(0).toLongLong(),
                       .lastAnswer = query.value(1).toLongLong(),
                       .answers = query.value(2).toLongLong(),
                       .personas = query.value(3).toLongLong(),
                       .questions = query.value(4).toLongLong()};
}

/// In a transaction, and while another statement is at work, SQLite refuses for that reason; it never writes, for want
/// of a name to write to.
static bool isOutsideOfTransactions(const QSqlDatabase &database)
{
    QSqlQuery query(database);
    query.exec(u"VACUUM INTO NULL"_s);
    return query.lastError().databaseText() == "non-text filename"_L1;
}

void GridPatch::remember(const QSqlDatabase &database, const QList<ResultPersona> &personas,
                         const QList<ResultQuestion> &questions, const QBitArray &answeredPairs)
{
    seen = isOutsideOfTransactions(database) ? fingerprint(database) : std::nullopt;
    rowsOf.clear();
    questionIds.clear();
    if (!seen)
        return;
    TextBytes toBytes(database);
    for (int row = 0; row < personas.size(); ++row) {
        // A persona without a uuid has no answers.
        if (!personas.at(row).uuid.isNull())
            rowsOf[toBytes.of(personas.at(row).uuid)].append(row);
    }
    for (const ResultQuestion &question : questions)
        questionIds.append(question.id);
    answered = answeredPairs;
}

bool GridPatch::apply(const QSqlDatabase &database, ReasoningCache &known)
{
    if (!seen || !isUntouched())
        return false;
    const auto now = fingerprint(database);
    if (!now || now->schema != seen->schema || now->personas != seen->personas || now->questions != seen->questions ||
        now->answers - seen->answers != now->changes - seen->changes)
        return false;
    const auto cells = newCells(database, known, now->changes - seen->changes);
    if (!cells)
        return false;
    enter(*cells);
    seen = isOutsideOfTransactions(database) ? now : std::nullopt;
    return true;
}

/// The cells of the answers that came since, all of which must be new rows. Nothing where one of them answers a pair
/// that has an answer already, since it need not be the newest.
std::optional<QList<GridPatch::NewCell>> GridPatch::newCells(const QSqlDatabase &database, ReasoningCache &known,
                                                             qint64 expected) const
{
    QList<NewCell> cells;
    if (expected == 0)
        return cells;
    const QList<StoredAnswer> stored = answersBehind(database, seen->lastAnswer, known);
    if (stored.size() != expected)
        return std::nullopt;
    QBitArray taken = answered;
    for (const StoredAnswer &answer : stored) {
        if (!answer.isOfPair)
            continue;
        const QList<int> rows = rowsOf.value(answer.personaUuid);
        for (int question = 0; question < questionIds.size(); ++question) {
            if (questionIds.at(question) != answer.questionId)
                continue;
            for (const int row : rows) {
                const qsizetype pair = (row * questionIds.size()) + question;
                if (taken.testBit(pair))
                    return std::nullopt;
                taken.setBit(pair);
                cells.append({.row = row, .question = question, .shown = answer.shown});
            }
        }
    }
    return cells;
}

void GridPatch::enter(const QList<NewCell> &cells)
{
    const QScopedValueRollback guard(working, true);
    for (const NewCell &cell : cells) {
        const int column = (2 * cell.question) + 1;
        for (const auto &[place, text] : {std::pair(column, cell.shown.answer), {column + 1, cell.shown.reasoning}}) {
            table->item(cell.row, place)->setText(text);
            table->cellFilled(cell.row, place);
        }
        answered.setBit((cell.row * questionIds.size()) + cell.question);
    }
    // As a rebuilding ends: the columns are fitted at the next layout.
    table->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
}
