// The persona list, rebuilt whole after each change of the panel.

#include "bench/report.h"
#include "bench/samples.h"
#include "bench/suites.h"
#include "bench/survey.h"

#include <QPlainTextEdit>
#include <QTableWidget>

using namespace Qt::StringLiterals;
using Unit = Report::Unit;

namespace {

/// The texts of the persona list, its narratives in their column.
QList<QStringList> textsOf(const QTableWidget *table)
{
    QList<QStringList> rows;
    for (int row = 0; row < table->rowCount(); ++row) {
        QStringList &texts = rows.emplace_back();
        for (int column = 0; column < table->columnCount(); ++column) {
            const auto *editor = qobject_cast<QPlainTextEdit *>(table->cellWidget(row, column));
            texts.append(editor != nullptr ? editor->toPlainText() : table->item(row, column)->text());
        }
    }
    return rows;
}

/// The same table by Qt alone: all rows first, then the cells, from memory.
void rebuildPanel(QTableWidget *table, const QList<QStringList> &rows, int narrativeColumn)
{
    table->clearContents();
    table->setRowCount(0);
    table->setRowCount(int(rows.size()));
    for (int row = 0; row < rows.size(); ++row) {
        const QStringList &texts = rows.at(row);
        for (int column = 0; column < texts.size(); ++column) {
            if (column != narrativeColumn) {
                table->setItem(row, column, new QTableWidgetItem(texts.at(column)));
                continue;
            }
            auto *editor = new QPlainTextEdit(texts.at(column));
            editor->setReadOnly(true);
            editor->setFixedHeight(60);
            table->setCellWidget(row, column, editor);
        }
    }
}

} // namespace

static void refreshPanel(benchmark::State &state, int personas, Survey::Tab tab)
{
    static constexpr int narrativeColumn = 3;
    Survey survey(personas, 0, 0, tab, 2000);
    auto *table = survey.find<QTableWidget>(u"personaTable"_s);
    const QList<QStringList> texts = textsOf(table);
    Samples own;
    Samples floor;
    for ([[maybe_unused]] const auto _ : state) {
        state.SetIterationTime(own.time([&] {
            survey.call("loadProject");
            settle();
        }));
        floor.time([&] {
            rebuildPanel(table, texts, narrativeColumn);
            settle();
        });
    }
    state.counters["refresh"] = own.median();
    state.counters["floor"] = floor.median();
    state.counters["ratio"] = own.median() / floor.median();
    state.counters["per persona"] = own.median() / personas;
}

void addPanelBenchmarks(Report &report, Extent extent)
{
    report.addTable("panel", "One refresh of the persona list",
                    {{"refresh", "refresh", Unit::Milliseconds},
                     {"floor", "floor", Unit::Milliseconds},
                     {"refresh : floor", "ratio", Unit::Ratio},
                     {"per persona", "per persona", Unit::Microseconds}});
    const bool smoke = extent == Extent::Smoke;
    for (const int personas : smoke ? QList{15} : QList{200, 1000, 2000}) {
        for (const auto &[tab, name] : {std::pair(Survey::Tab::Personas, "in front"), {Survey::Tab::Empty, "behind"}}) {
            const std::string title = "panel/" + std::to_string(personas) + ", " + name;
            benchmark::RegisterBenchmark(title, refreshPanel, personas, tab)
                ->Iterations(smoke ? 1 : 5)
                ->UseManualTime();
        }
    }
}
