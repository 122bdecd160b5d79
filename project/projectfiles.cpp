// Project files, and the guard of unsaved changes. A file is the in-memory database written out whole, and opening one
// copies its tables into that database: the user works on a copy, and a file changes only by "Save".

#include "app/mainwindow.h"
#include "app/testmode.h"
#include "project/temporaryconnection.h"

#include <QCloseEvent>
#include <QDebug>
#include <QFileDialog>
#include <QMessageBox>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlTableModel>

using namespace Qt::StringLiterals;

void MainWindow::openProject()
{
    if (testMode())
        return;
    const QString path = QFileDialog::getOpenFileName(this, tr("Open Project"), QString(),
                                                      tr("Persona Project (*.ormt);;All Files (*)"));
    if (!path.isEmpty())
        openProjectFromFile(path);
}

bool MainWindow::openProjectFromFile(const QString &path)
{
    if (dirty && !testMode()) {
        const auto answer =
            QMessageBox::question(this, tr("Open Project"), tr("Discard current changes and open another project?"),
                                  QMessageBox::Yes | QMessageBox::No, QMessageBox::No);
        if (answer != QMessageBox::Yes)
            return false;
    }

    TemporaryConnection file(u"diskproj"_s, path);
    if (!file.isOpen()) {
        qWarning().noquote() << "failed to open project" << file.errorText();
        return false;
    }
    // From here on the former project is given up.
    dropQuestionModel();
    if (db.isOpen())
        resetProjectTables();
    else if (!openProjectDatabase("failed to open memory db", ScriptLogging::Off))
        return false;
    if (!copyProjectFile(path, file.database()))
        return false;
    file.close();

    projectPath = path;
    loadProject();
    // The refresh passes through the text slots, which set the flag.
    dirty = false;
    return true;
}

/// Copies the tables that the file has, by position. A table that does not fit stays empty; only a file that can't be
/// attached at all gives false.
bool MainWindow::copyProjectFile(const QString &path, const QSqlDatabase &file)
{
    QString quoted = path;
    quoted.replace(u'\'', "''"_L1);
    QSqlQuery query(db);
    if (!query.exec("ATTACH DATABASE '"_L1 + quoted + "' AS disk"_L1)) {
        qWarning().noquote() << query.lastError().text();
        return false;
    }
    const QStringList present = file.tables(QSql::Tables);
    for (const auto name : {"metadata"_L1, "boilerplate"_L1, "personas"_L1, "questions"_L1, "question_attachments"_L1,
                            "responses"_L1, "tags"_L1, "persona_tags"_L1}) {
        if (present.contains(name, Qt::CaseSensitive))
            query.exec("INSERT INTO "_L1 + name + " SELECT * FROM disk."_L1 + name);
    }
    // The copying has counted on; the file's own count says where its numbering was left.
    if (present.contains("sqlite_sequence"_L1, Qt::CaseSensitive)) {
        query.exec(u"DELETE FROM sqlite_sequence"_s);
        query.exec(u"INSERT INTO sqlite_sequence SELECT * FROM disk.sqlite_sequence"_s);
    }
    query.exec(u"DETACH DATABASE disk"_s);
    return true;
}

void MainWindow::saveProject()
{
    if (projectPath.isEmpty())
        saveProjectAs();
    else
        saveProjectToFile(projectPath);
}

void MainWindow::saveProjectAs()
{
    if (testMode())
        return;
    const QString path = QFileDialog::getSaveFileName(this, tr("Save Project"), QString(),
                                                      tr("Persona Project (*.ormt);;All Files (*)"));
    if (!path.isEmpty())
        saveProjectToFile(path);
}

bool MainWindow::saveProjectToFile(const QString &path)
{
    if (!db.isOpen())
        return false;
    if (questionModel != nullptr)
        questionModel->submitAll();
    {
        // Never writes over a file that is there and not empty: such a path fails here.
        QSqlQuery query(db);
        query.prepare(u"VACUUM INTO ?"_s);
        query.addBindValue(path);
        if (!query.exec()) {
            qWarning().noquote() << "vacuum into failed" << query.lastError().text();
            return false;
        }
    }
    projectPath = path;
    if (questionModel != nullptr)
        selectQuestions();
    else
        loadQuestions();
    dirty = false;
    return true;
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    if (!dirty) {
        event->accept();
        return;
    }
    const auto answer = QMessageBox::question(this, tr("Unsaved Changes"), tr("You have unsaved changes. Quit anyway?"),
                                              QMessageBox::Yes | QMessageBox::No, QMessageBox::No);
    event->setAccepted(answer != QMessageBox::No);
}
