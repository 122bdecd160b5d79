#include "bench/soakmemory.h"

#include "bench/literal.h"
#include "bench/memory.h"
#include "bench/survey.h"

#include <QDialog>
#include <QPlainTextEdit>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QTableWidget>
#include <QVBoxLayout>

using namespace Qt::StringLiterals;

/// What a function leaves allocated.
template<typename Function>
static double left(const Function &function)
{
    const double before = allocated();
    function();
    return allocated() - before;
}

// Copies that share nothing with what they are copies of.

static QString own(const QString &text)
{
    return QString(text.constData(), text.size());
}
static QByteArray own(const QByteArray &bytes)
{
    return {bytes.constData(), bytes.size()};
}

double rowsMemory(const QSqlDatabase &project)
{
    double bytes = 0;
    {
        QSqlDatabase copy = QSqlDatabase::addDatabase(u"QSQLITE"_s, u"copy"_s);
        copy.setDatabaseName(u":memory:"_s);
        copy.open();
        QSqlQuery row(project);
        row.exec(u"SELECT sql FROM sqlite_master WHERE name='responses'"_s);
        row.next();
        QSqlQuery insert(copy);
        insert.exec(row.value(0).toString());
        row.exec(u"SELECT * FROM responses ORDER BY id"_s);
        const int columns = row.record().count();
        insert.prepare(u"INSERT INTO responses VALUES (?"_s + u",?"_s.repeated(columns - 1) + u')');
        bytes = left([&] {
            while (row.next()) {
                for (int column = 0; column < columns; ++column)
                    insert.bindValue(column, row.value(column));
                insert.exec();
            }
        });
    }
    QSqlDatabase::removeDatabase(u"copy"_s);
    return bytes;
}

double gridMemory(int personas, int questions, const QList<SoakExchange> &exchanges)
{
    QTableWidget grid;
    const qsizetype columns = (2 * questions) + 1;
    rebuildFrom(&grid, QStringList(columns), QList<QStringList>(personas, QStringList(columns)));
    return left([&] {
        for (const SoakExchange &exchange : exchanges) {
            if (!exchange.answer)
                continue;
            const int column = (2 * exchange.question) + 1;
            grid.item(exchange.persona, column)->setText(own(shownText(*exchange.answer)));
            grid.item(exchange.persona, column + 1)->setText(own(exchange.answer->reasoning));
        }
    });
}

double logMemory(const QList<SoakExchange> &exchanges, const QStringList &warnings)
{
    QDialog window;
    auto *view = new QPlainTextEdit;
    view->setReadOnly(true);
    view->setUndoRedoEnabled(false);
    (new QVBoxLayout(&window))->addWidget(view);
    window.resize(500, 400);
    window.show();
    settle();
    return left([&] {
        qsizetype failures = 0;
        for (const SoakExchange &exchange : exchanges) {
            const QStringList entries = logEntries(exchange, exchange.answer ? QString() : warnings.value(failures++));
            for (const QString &entry : entries)
                view->appendPlainText(entry);
            settle();
        }
    });
}

double requestsMemory(const QList<standin::Request> &requests)
{
    QList<standin::Request> copies;
    return left([&] {
        for (const standin::Request &request : requests) {
            standin::Request copy = request;
            for (QByteArray *bytes : {&copy.method, &copy.target, &copy.requestLine, &copy.head, &copy.body})
                *bytes = own(*bytes);
            copy.headers.clear();
            for (const auto &[name, value] : request.headers)
                copy.headers.emplaceBack(own(name), own(value));
            copies.append(copy);
        }
    });
}

double exchangesMemory(const QList<SoakExchange> &exchanges)
{
    QList<SoakExchange> copies;
    return left([&] {
        for (const SoakExchange &exchange : exchanges) {
            // The request is the endpoint's.
            SoakExchange copy{.persona = exchange.persona,
                              .question = exchange.question,
                              .request = {},
                              .replies = exchange.replies,
                              .answer = {}};
            if (exchange.answer) {
                const SoakAnswer &answer = *exchange.answer;
                copy.answer = SoakAnswer{.body = own(answer.body),
                                         .text = own(answer.text),
                                         .textAnswer = own(answer.textAnswer),
                                         .number = answer.number,
                                         .json = own(answer.json),
                                         .reasoning = own(answer.reasoning)};
            }
            copies.append(copy);
        }
    });
}
