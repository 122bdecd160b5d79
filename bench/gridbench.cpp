// The grid: one refresh, as it follows each answer of a run.

#include "bench/literal.h"
#include "bench/report.h"
#include "bench/samples.h"
#include "bench/suites.h"
#include "bench/survey.h"

#include <QStyledItemDelegate>
#include <QTableWidget>

using Unit = Report::Unit;

namespace {

struct Size
{
    int personas;
    int questions;
    int iterations;
    bool literal; ///< bearable the plain way
};

/// A call, and the call with the layout that follows.
struct Refresh
{
    Samples call;
    Samples whole;

    /// The refresh before is of the same kind, since clearing away its items is part of the cost.
    template<typename Function>
    double time(const Function &refresh)
    {
        refresh();
        return whole.time([&] {
            call.time(refresh);
            settle();
        });
    }
};

/// The texts of the grid as it stands.
struct Texts
{
    explicit Texts(const QTableWidget *table)
    {
        for (int column = 0; column < table->columnCount(); ++column)
            titles.append(table->horizontalHeaderItem(column)->text());
        for (int row = 0; row < table->rowCount(); ++row) {
            QStringList &texts = rows.emplace_back();
            for (int column = 0; column < table->columnCount(); ++column)
                texts.append(table->item(row, column)->text());
        }
    }
    QStringList titles;
    QList<QStringList> rows;
};

/// The table with Qt's own delegate while it lives.
class PlainDelegate
{
public:
    explicit PlainDelegate(QTableWidget *which)
        : table(which)
        , own(which->itemDelegate())
    {
        table->setItemDelegate(&plain);
        settle();
    }
    ~PlainDelegate()
    {
        table->setItemDelegate(own);
        settle();
    }
    Q_DISABLE_COPY_MOVE(PlainDelegate)

private:
    QTableWidget *table;
    QAbstractItemDelegate *own;
    QStyledItemDelegate plain;
};

} // namespace

static void setCounters(benchmark::State &state, const Refresh &own, const Refresh &floor, double cells)
{
    state.counters["call"] = own.call.median();
    state.counters["whole"] = own.whole.median();
    state.counters["floor call"] = floor.call.median();
    state.counters["floor whole"] = floor.whole.median();
    state.counters["call ratio"] = own.call.median() / floor.call.median();
    state.counters["whole ratio"] = own.whole.median() / floor.whole.median();
    state.counters["call per cell"] = own.call.median() / cells;
    state.counters["whole per cell"] = own.whole.median() / cells;
}

static void refreshGrid(benchmark::State &state, const Size &size, Survey::Tab tab)
{
    Survey survey(size.personas, size.questions, size.personas * size.questions, tab);
    survey.keepGridRebuilt();
    QTableWidget *table = survey.table();
    Texts texts(table);
    Refresh own;
    Refresh floor;
    Refresh literal;
    for ([[maybe_unused]] const auto _ : state) {
        survey.changeOneAnswer();
        state.SetIterationTime(own.time([&] { survey.refresh(); }));
        texts.rows[0][1] = table->item(0, 1)->text();
        const PlainDelegate plain(table);
        floor.time([&] { rebuildFrom(table, texts.titles, texts.rows); });
        if (size.literal)
            literal.time([&] { rebuildLiterally(table, survey.database()); });
    }
    setCounters(state, own, floor, double(table->rowCount()) * table->columnCount());
    if (size.literal) {
        state.counters["literal call"] = literal.call.median();
        state.counters["literal whole"] = literal.whole.median();
    }
}

/// After one new answer to an open pair, the grid untouched since its last refresh.
static void refreshAfterAnswer(benchmark::State &state, const Size &size, Survey::Tab tab)
{
    const int pairs = size.personas * size.questions;
    int answers = pairs / 2;
    Survey survey(size.personas, size.questions, answers, tab);
    // The first refresh after foreign changes rebuilds, the next ones measure what they need.
    survey.refresh();
    settle();
    Samples call;
    Samples whole;
    for ([[maybe_unused]] const auto _ : state) {
        survey.addAnswers(answers, answers + 1);
        ++answers;
        state.SetIterationTime(whole.time([&] {
            call.time([&] { survey.refresh(); });
            settle();
        }));
    }
    state.counters["call"] = call.median();
    state.counters["whole"] = whole.median();
    state.counters["most"] = whole.most();
}

static void addPatchBenchmarks(Report &report, Extent extent)
{
    report.addTable("patch", "One refresh after a new answer, the grid untouched",
                    {{"call", "call", Unit::Milliseconds},
                     {"with layout", "whole", Unit::Milliseconds},
                     {"the slowest", "most", Unit::Milliseconds}});
    QList<Size> sizes{{50, 20, 51, false}, {1000, 20, 51, false}, {2000, 50, 51, false}};
    if (extent == Extent::Smoke)
        sizes = {{15, 9, 1, false}};
    for (const Size &size : std::as_const(sizes)) {
        for (const auto &[tab, name] : {std::pair(Survey::Tab::Results, "in front"), {Survey::Tab::Empty, "behind"}}) {
            const std::string title =
                "patch/" + std::to_string(size.personas) + "x" + std::to_string(size.questions) + ", " + name;
            benchmark::RegisterBenchmark(title, refreshAfterAnswer, size, tab)
                ->Iterations(size.iterations)
                ->UseManualTime();
        }
    }
}

void addGridBenchmarks(Report &report, Extent extent)
{
    addPatchBenchmarks(report, extent);
    report.addTable("grid", "One rebuilding of the results grid",
                    {{"call", "call", Unit::Milliseconds},
                     {"floor", "floor call", Unit::Milliseconds},
                     {"call : floor", "call ratio", Unit::Ratio},
                     {"literal", "literal call", Unit::Milliseconds},
                     {"per cell", "call per cell", Unit::Nanoseconds},
                     {"with layout", "whole", Unit::Milliseconds},
                     {"floor", "floor whole", Unit::Milliseconds},
                     {"with layout : floor", "whole ratio", Unit::Ratio},
                     {"literal", "literal whole", Unit::Milliseconds},
                     {"per cell", "whole per cell", Unit::Nanoseconds}});
    QList<Size> sizes{
        {15, 9, 31, true}, {50, 20, 15, true}, {200, 20, 15, true}, {1000, 20, 9, false}, {2000, 50, 5, false}};
    if (extent == Extent::Smoke)
        sizes = {{15, 9, 1, true}};
    for (const Size &size : std::as_const(sizes)) {
        for (const auto &[tab, name] : {std::pair(Survey::Tab::Results, "in front"), {Survey::Tab::Empty, "behind"}}) {
            const std::string title =
                "grid/" + std::to_string(size.personas) + "x" + std::to_string(size.questions) + ", " + name;
            benchmark::RegisterBenchmark(title, refreshGrid, size, tab)->Iterations(size.iterations)->UseManualTime();
        }
    }
}
