#include "bench/soakcheck.h"

#include "bench/survey.h"
#include "inspect/chatlogwindow.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPlainTextEdit>
#include <QSqlQuery>
#include <QTableWidget>
#include <QTextBlock>

#include <cstdio>

using namespace Qt::StringLiterals;

void Complaints::add(const QString &complaint)
{
    static constexpr int mostTold = 20;
    if (++number <= mostTold)
        std::fprintf(stderr, "BROKEN: %s\n", qUtf8Printable(complaint.left(2000)));
}

static QString nameOf(const SoakExchange &exchange)
{
    return u"persona %1, question %2 (%3)"_s.arg(exchange.persona)
        .arg(exchange.question)
        .arg(exchange.replies.join(u", "));
}

static bool holds(const QSqlQuery &row, const SoakExchange &exchange)
{
    const SoakAnswer &answer = *exchange.answer;
    return row.value(0).toString() == u"Persona %1"_s.arg(exchange.persona, 5, 10, QLatin1Char('0')) &&
           row.value(1).toInt() == exchange.question + 1 && row.value(2).toString() == answer.textAnswer &&
           row.value(3).isNull() == !answer.number.isValid() && row.value(3).toDouble() == answer.number.toDouble() &&
           row.value(4).toString() == answer.json;
}

void checkRows(const Survey &survey, const QList<SoakExchange> &exchanges, Complaints &complaints)
{
    QSqlQuery row(survey.database());
    row.setForwardOnly(true);
    row.exec(u"SELECT p.name,r.question_id,r.text_answer,r.numeric_answer,r.json_answer "
             "FROM responses r LEFT JOIN personas p ON p.uuid=r.persona_uuid ORDER BY r.id"_s);
    for (const SoakExchange &exchange : exchanges) {
        if (!exchange.answer)
            continue;
        if (!row.next()) {
            complaints.add("answers are missing from the table, the first is that of "_L1 + nameOf(exchange));
            return;
        }
        if (!holds(row, exchange)) {
            QStringList found;
            for (int column = 0; column < 5; ++column)
                found << row.value(column).toString();
            complaints.add(u"%1: the row holds \"%2\" and not \"%3\""_s.arg(
                nameOf(exchange), found.join(u'|'),
                QStringList{exchange.answer->textAnswer, exchange.answer->number.toString(), exchange.answer->json}
                    .join(u'|')));
        }
    }
    if (row.next())
        complaints.add(
            u"the table holds a row that is no answer: %1, %2"_s.arg(row.value(0).toString(), row.value(1).toString()));
}

QString shownText(const SoakAnswer &answer)
{
    if (!answer.textAnswer.isEmpty())
        return answer.textAnswer;
    return answer.number.isValid() ? QString::number(answer.number.toDouble(), 'g', 6) : answer.json;
}

void checkGrid(Survey &survey, const QList<SoakExchange> &exchanges, Complaints &complaints)
{
    QHash<std::pair<int, int>, QString> expected; // by row and column, where a text is to be shown
    for (const SoakExchange &exchange : exchanges) {
        if (!exchange.answer)
            continue;
        const int column = (2 * exchange.question) + 1;
        expected.insert({exchange.persona, column}, shownText(*exchange.answer));
        expected.insert({exchange.persona, column + 1}, exchange.answer->reasoning);
    }
    const QTableWidget *grid = survey.table();
    for (int row = 0; row < grid->rowCount(); ++row) {
        for (int column = 1; column < grid->columnCount(); ++column) {
            const QString shown = grid->item(row, column)->text();
            if (shown != expected.take({row, column}))
                complaints.add(u"the grid shows \"%1\" at %2, %3"_s.arg(shown).arg(row).arg(column));
        }
    }
    if (!expected.isEmpty())
        complaints.add(u"the grid has no cell for %1 texts"_s.arg(expected.size()));
}

QStringList logEntries(const SoakExchange &exchange, const QString &failure)
{
    const QJsonArray messages = QJsonDocument::fromJson(exchange.request)["messages"_L1].toArray();
    QStringList entries{"-> "_L1 + QString::fromUtf8(QJsonDocument(messages).toJson(QJsonDocument::Compact)),
                        "-> "_L1 + QString::fromUtf8(exchange.request)};
    if (exchange.answer)
        entries << "<- "_L1 + QString::fromUtf8(exchange.answer->body) << "<- "_L1 + exchange.answer->text;
    else
        entries << "! "_L1 + failure;
    return entries;
}

void checkLog(Survey &survey, const QList<SoakExchange> &exchanges, const QStringList &warnings, Complaints &complaints)
{
    const auto *view = survey.find<ChatLogWindow>({})->findChild<QPlainTextEdit *>();
    QTextBlock block = view->document()->firstBlock();
    qsizetype failures = 0;
    for (const SoakExchange &exchange : exchanges) {
        const QString failure = exchange.answer ? QString() : warnings.value(failures++);
        const QStringList lines = logEntries(exchange, failure).join(u'\n').split(u'\n');
        for (const QString &line : lines) {
            if (!block.isValid() || block.text() != line) {
                complaints.add(u"%1: the log holds \"%2\" and not \"%3\""_s.arg(nameOf(exchange), block.text(), line));
                return;
            }
            block = block.next();
        }
    }
    if (block.isValid())
        complaints.add(u"the log goes on: "_s + block.text());
    if (failures != warnings.size())
        complaints.add(u"%1 pairs failed and %2 failures were told"_s.arg(failures).arg(warnings.size()));
}
