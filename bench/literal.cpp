#include "bench/literal.h"

#include <QHeaderView>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTableWidget>
#include <QVariant>

using namespace Qt::StringLiterals;

/// The rows of a query of two columns.
static QList<std::pair<QVariant, QString>> rowsOf(const QSqlDatabase &database, const QString &statement)
{
    QList<std::pair<QVariant, QString>> rows;
    QSqlQuery query(statement, database);
    while (query.next())
        rows.append({query.value(0), query.value(1).toString()});
    return rows;
}

static auto personasOf(const QSqlDatabase &database)
{
    return rowsOf(database, u"SELECT uuid,name FROM personas ORDER BY name"_s);
}

static auto questionsOf(const QSqlDatabase &database)
{
    return rowsOf(database, u"SELECT question_id,prompt FROM questions ORDER BY order_num"_s);
}

static std::pair<QString, QString> cellsOf(const QSqlDatabase &database, const QVariant &uuid, const QVariant &question)
{
    QSqlQuery query(database);
    query.prepare(u"SELECT text_answer,numeric_answer,json_answer FROM responses "
                  "WHERE persona_uuid=? AND question_id=? ORDER BY created_at DESC LIMIT 1"_s);
    query.addBindValue(uuid);
    query.addBindValue(question);
    if (!query.exec() || !query.next())
        return {};
    const QString json = query.value(2).toString();
    QString answer = query.value(0).toString();
    if (answer.isEmpty())
        answer = query.isNull(1) ? json : QString::number(query.value(1).toDouble(), 'g', 6);
    return {answer, QJsonDocument::fromJson(json.toUtf8()).object().value("reasoning"_L1).toString()};
}

void rebuildLiterally(QTableWidget *table, const QSqlDatabase &database)
{
    table->clear();
    table->setRowCount(0);
    table->setColumnCount(0);
    const auto personas = personasOf(database);
    const auto questions = questionsOf(database);
    table->setRowCount(int(personas.size()));
    table->setColumnCount(int((2 * questions.size()) + 1));
    QStringList titles{u"Persona"_s};
    for (const auto &[id, prompt] : questions)
        titles << prompt << u"Reasoning for %1"_s.arg(prompt);
    table->setHorizontalHeaderLabels(titles);
    for (int row = 0; row < personas.size(); ++row) {
        const auto &[uuid, name] = personas.at(row);
        table->setVerticalHeaderItem(row, new QTableWidgetItem(name));
        table->setItem(row, 0, new QTableWidgetItem(name));
        int column = 1;
        for (const auto &[id, prompt] : questions) {
            const auto [answer, reason] = cellsOf(database, uuid, id);
            table->setItem(row, column++, new QTableWidgetItem(answer));
            table->setItem(row, column++, new QTableWidgetItem(reason));
        }
    }
    table->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
}

void rebuildFrom(QTableWidget *table, const QStringList &titles, const QList<QStringList> &rows)
{
    QHeaderView *header = table->horizontalHeader();
    header->setSectionResizeMode(QHeaderView::Interactive);
    table->clear();
    table->setRowCount(0);
    table->setColumnCount(0);
    table->setRowCount(int(rows.size()));
    table->setColumnCount(int(titles.size()));
    table->setHorizontalHeaderLabels(titles);
    for (int row = 0; row < rows.size(); ++row) {
        const QStringList &texts = rows.at(row);
        table->setVerticalHeaderItem(row, new QTableWidgetItem(texts.first()));
        for (int column = 0; column < texts.size(); ++column)
            table->setItem(row, column, new QTableWidgetItem(texts.at(column)));
    }
    header->setSectionResizeMode(QHeaderView::ResizeToContents);
}

void countAnswers(const QSqlDatabase &database, int step)
{
    const auto personas = personasOf(database);
    const auto questions = questionsOf(database);
    for (qsizetype pair = 0; pair < personas.size() * questions.size(); pair += step) {
        QSqlQuery query(database);
        query.prepare(u"SELECT COUNT(*) FROM responses WHERE persona_uuid=? AND question_id=?"_s);
        query.addBindValue(personas.at(pair / questions.size()).first);
        query.addBindValue(questions.at(pair % questions.size()).first);
        if (!query.exec() || !query.next() || query.value(0).toInt() == 0)
            qFatal("an answer is missing");
    }
}
