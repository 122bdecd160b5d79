// What the window of the stage has to show of the project that it holds, read as a user reads it.

#include "fuzz/filestage.h"
#include "fuzz/promises.h"
#include "fuzz/trail.h"

#include <QComboBox>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPlainTextEdit>
#include <QSqlQuery>
#include <QTableView>
#include <QTableWidget>

#include <bit>

using namespace Qt::StringLiterals;

// Grids beyond this are compared by their size alone.
static constexpr qsizetype mostCells = 40;

void FileStage::checkPersonaList()
{
    const auto *table = window.findChild<QTableWidget *>(u"personaTable"_s);
    leaveTrail(Trail::Rows, static_cast<size_t>(std::bit_width(static_cast<unsigned>(table->rowCount()))));
    bool whole = true;
    for (int row = 0; row < table->rowCount(); ++row) {
        for (const int column : {0, 1, 2, 4, 5})
            whole = whole && table->item(row, column) != nullptr;
        whole = whole && qobject_cast<QPlainTextEdit *>(table->cellWidget(row, 3)) != nullptr &&
                table->item(row, 1)->data(Qt::UserRole).toString().startsWith(table->item(row, 1)->text());
    }
    promise(whole, "each persona's row is whole");
    promise(window.findChild<QComboBox *>(u"tagFilter"_s)->itemText(0) == "All"_L1, "all personas can be shown");
}

void FileStage::checkViews()
{
    checkPersonaList();
    const auto *personas = window.findChild<QTableWidget *>(u"personaTable"_s);
    promise(personas->rowCount() == value(u"SELECT COUNT(*) FROM (SELECT 1 FROM personas GROUP BY uuid)"_s).toInt(),
            "each persona is listed");
    const auto *questions = window.findChild<QTableView *>(u"questionView"_s);
    promise(questions->model() != nullptr &&
                questions->model()->rowCount() == value(u"SELECT COUNT(*) FROM questions"_s).toInt(),
            "each question is listed");
    promise(value(u"SELECT COUNT(*) FROM boilerplate"_s).toInt() == 1, "there is one boilerplate");
    checkGrid();
}

void FileStage::checkGrid()
{
    const auto *grid = window.findChild<QTableWidget *>(u"resultsTable"_s);
    QList<int> questions;
    QSqlQuery query(project());
    query.exec(u"SELECT question_id FROM questions ORDER BY order_num"_s);
    while (query.next())
        questions.append(query.value(0).toInt());
    QVariantList personas;
    query.exec(u"SELECT uuid FROM personas ORDER BY name"_s);
    while (query.next())
        personas.append(query.value(0).toString());
    promise(grid->rowCount() == personas.size() && grid->columnCount() == (2 * questions.size()) + 1,
            "the grid has a row for each persona and two columns for each question");
    if (grid->rowCount() != personas.size() || grid->columnCount() != (2 * questions.size()) + 1 ||
        personas.size() * questions.size() > mostCells)
        return;
    for (int row = 0; row < grid->rowCount(); ++row)
        checkCells(grid, row, personas.at(row), questions);
}

/// The cells of a persona, each pair by a statement of its own.
void FileStage::checkCells(const QTableWidget *grid, int row, const QVariant &uuid, const QList<int> &questions)
{
    QSqlQuery query(project());
    query.prepare(
        u"SELECT text_answer,numeric_answer,json_answer FROM responses WHERE persona_uuid=? AND question_id=? "
        "ORDER BY created_at DESC LIMIT 1"_s);
    for (int question = 0; question < questions.size(); ++question) {
        query.bindValue(0, uuid);
        query.bindValue(1, questions.at(question));
        QString answer;
        QString reason;
        if (query.exec() && query.next()) {
            const QString json = query.value(2).toString();
            answer = query.value(0).toString();
            if (answer.isEmpty())
                answer = query.isNull(1) ? json : QString::number(query.value(1).toDouble(), 'g', 6);
            reason = QJsonDocument::fromJson(json.toUtf8()).object().value("reasoning"_L1).toString();
        }
        const auto *first = grid->item(row, (2 * question) + 1);
        const auto *second = grid->item(row, (2 * question) + 2);
        promise(first != nullptr && second != nullptr && first->text() == answer && second->text() == reason,
                "each cell shows the newest answer", answer);
    }
}
