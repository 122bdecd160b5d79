// The two texts of the Boilerplate tab, kept in the one row of the table boilerplate and rewritten at every keystroke.

#include "project/boilerplate.h"

#include "app/mainwindow.h"
#include "project/tables.h"

#include <QPlainTextEdit>
#include <QSqlQuery>

using namespace Qt::StringLiterals;

static constexpr auto defaultPreamble = "Act as the following persona."_L1;

std::optional<Boilerplate> readBoilerplate(const QSqlDatabase &database)
{
    QSqlQuery query(database);
    if (query.exec(u"SELECT preamble, postamble FROM boilerplate LIMIT 1"_s) && query.next())
        return Boilerplate{.preamble = query.value(0).toString(), .postamble = query.value(1).toString()};
    return std::nullopt;
}

void insertDefaultBoilerplate(const QSqlDatabase &database)
{
    QSqlQuery(database).exec("INSERT INTO boilerplate (preamble, postamble) VALUES ('"_L1 + defaultPreamble +
                             "', '')"_L1);
}

void MainWindow::showBoilerplate()
{
    if (!hasTable(db, "boilerplate"_L1)) {
        QSqlQuery(db).exec(u"CREATE TABLE boilerplate (preamble TEXT, postamble TEXT)"_s);
        insertDefaultBoilerplate(db);
    }
    const Boilerplate texts = readBoilerplate(db).value_or(Boilerplate{.preamble = defaultPreamble, .postamble = {}});
    // Each call fires textChanged, so the row is rewritten and the project marked as changed by every refresh.
    preambleEdit->setPlainText(texts.preamble);
    postambleEdit->setPlainText(texts.postamble);
}

void MainWindow::storeBoilerplate(const QVariant &preamble, const QVariant &postamble)
{
    QSqlQuery query(db);
    query.exec(u"DELETE FROM boilerplate"_s);
    query.prepare(u"INSERT INTO boilerplate (preamble, postamble) VALUES (?, ?)"_s);
    query.addBindValue(preamble);
    query.addBindValue(postamble);
    query.exec();
    dirty = true;
}

void MainWindow::preambleChanged()
{
    if (!db.isOpen())
        return;
    // From the table: while a project is being loaded postambleEdit still shows the text of the former one.
    QVariant postamble = u""_s;
    {
        QSqlQuery query(db);
        if (query.exec(u"SELECT postamble FROM boilerplate LIMIT 1"_s) && query.next())
            postamble = query.value(0);
    }
    storeBoilerplate(preambleEdit->toPlainText(), postamble);
}

void MainWindow::postambleChanged()
{
    if (!db.isOpen())
        return;
    storeBoilerplate(preambleEdit->toPlainText(), postambleEdit->toPlainText());
}
