#include "app/mainwindow.h"

#include "inspect/resultstable.h"
#include "inspect/textsizedelegate.h"

#include <QAction>
#include <QBoxLayout>
#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTableView>
#include <QTableWidget>

using namespace Qt::StringLiterals;

MainWindow::MainWindow(QWidget *parent)
    : QMainWindow(parent)
{
    buildMenus();

    tabWidget = new QTabWidget(this);
    setCentralWidget(tabWidget);
    tabWidget->addTab(buildPersonaPage(), u"Digital Twins"_s);
    tabWidget->addTab(buildBoilerplatePage(), u"Boilerplate"_s);
    tabWidget->addTab(buildQuestionPage(), u"Questions"_s);
    tabWidget->addTab(buildMarketplacePage(), u"Marketplace"_s);
    tabWidget->addTab(buildResultsPage(), u"Results"_s);

    newProject();
}

void MainWindow::buildMenus()
{
    buildFileMenu();

    QMenu *settingsMenu = menuBar()->addMenu(tr("&Settings"));
    preferencesAction = settingsMenu->addAction(tr("Preferences"));
    connect(preferencesAction, &QAction::triggered, this, &MainWindow::showPreferences);

    QMenu *viewMenu = menuBar()->addMenu(tr("&View"));
    showCreatedAction = viewMenu->addAction(tr("Show Created"));
    showCreatedAction->setCheckable(true);
    connect(showCreatedAction, &QAction::toggled, this, &MainWindow::toggleCreated);
    showModifiedAction = viewMenu->addAction(tr("Show Modified"));
    showModifiedAction->setCheckable(true);
    connect(showModifiedAction, &QAction::toggled, this, &MainWindow::toggleModified);

    QMenu *surveyMenu = menuBar()->addMenu(tr("&Survey"));
    runSurveyAction = surveyMenu->addAction(tr("Run"));
    connect(runSurveyAction, &QAction::triggered, this, &MainWindow::runSurvey);

    QMenu *helpMenu = menuBar()->addMenu(tr("&Help"));
    const QAction *aboutAction = helpMenu->addAction(tr("About"));
    connect(aboutAction, &QAction::triggered, this, &MainWindow::showAbout);
}

void MainWindow::buildFileMenu()
{
    QMenu *fileMenu = menuBar()->addMenu(tr("&File"));
    newProjectAction = fileMenu->addAction(tr("New Project"));
    connect(newProjectAction, &QAction::triggered, this, &MainWindow::newProject);
    openProjectAction = fileMenu->addAction(tr("Open Project"));
    connect(openProjectAction, &QAction::triggered, this, &MainWindow::openProject);
    saveProjectAction = fileMenu->addAction(tr("Save"));
    connect(saveProjectAction, &QAction::triggered, this, &MainWindow::saveProject);
    saveProjectAsAction = fileMenu->addAction(tr("Save As"));
    connect(saveProjectAsAction, &QAction::triggered, this, &MainWindow::saveProjectAs);
    importPackAction = fileMenu->addAction(tr("Import Pack"));
    connect(importPackAction, &QAction::triggered, this, &MainWindow::onImport);
    exportPackAction = fileMenu->addAction(tr("Export Pack"));
    connect(exportPackAction, &QAction::triggered, this, &MainWindow::exportPack);
    const QAction *quitAction = fileMenu->addAction(tr("Quit"));
    connect(quitAction, &QAction::triggered, this, &MainWindow::attemptQuit);
}

QWidget *MainWindow::buildPersonaPage()
{
    auto *page = new QWidget;
    auto *layout = new QVBoxLayout(page);

    tagFilter = new QComboBox;
    tagFilter->setObjectName("tagFilter"_L1);
    layout->addWidget(tagFilter);
    connect(tagFilter, &QComboBox::currentTextChanged, this, &MainWindow::applyTagFilter);

    personaTable = new QTableWidget;
    personaTable->setObjectName("personaTable"_L1);
    personaTable->setColumnCount(6);
    personaTable->setHorizontalHeaderLabels(
        {u"Name"_s, u"UUID"_s, u"Tags"_s, u"Narrative"_s, u"Created"_s, u"Modified"_s});
    toggleCreated(false);
    toggleModified(false);
    layout->addWidget(personaTable);
    connect(personaTable, &QTableWidget::cellDoubleClicked, this, &MainWindow::editPersona);

    auto *buttons = new QHBoxLayout;
    layout->addLayout(buttons);
    auto *newButton = new QPushButton(tr("New"));
    buttons->addWidget(newButton);
    connect(newButton, &QPushButton::clicked, this, &MainWindow::newPersona);
    auto *copyButton = new QPushButton(tr("Copy"));
    buttons->addWidget(copyButton);
    connect(copyButton, &QPushButton::clicked, this, &MainWindow::copyPersona);
    auto *deleteButton = new QPushButton(tr("Delete"));
    buttons->addWidget(deleteButton);
    connect(deleteButton, &QPushButton::clicked, this, &MainWindow::deletePersona);
    buttons->addStretch();
    return page;
}

QWidget *MainWindow::buildBoilerplatePage()
{
    boilerplateTab = new QWidget;
    auto *layout = new QVBoxLayout(boilerplateTab);

    layout->addWidget(new QLabel(tr("Preamble (before persona)")));
    preambleEdit = new QPlainTextEdit;
    preambleEdit->setObjectName("preambleEdit"_L1);
    preambleEdit->setMinimumHeight(80);
    layout->addWidget(preambleEdit);
    connect(preambleEdit, &QPlainTextEdit::textChanged, this, &MainWindow::preambleChanged);

    layout->addWidget(new QLabel(tr("Postamble (after persona, before question)")));
    postambleEdit = new QPlainTextEdit;
    postambleEdit->setObjectName("postambleEdit"_L1);
    postambleEdit->setMinimumHeight(80);
    layout->addWidget(postambleEdit);
    connect(postambleEdit, &QPlainTextEdit::textChanged, this, &MainWindow::postambleChanged);

    layout->addWidget(buildConversationGroup());
    return boilerplateTab;
}

QGroupBox *MainWindow::buildConversationGroup()
{
    conversationGroup = new QGroupBox(tr("Conversation"));
    auto *layout = new QVBoxLayout(conversationGroup);

    auto *choosers = new QHBoxLayout;
    layout->addLayout(choosers);
    conversationPersonaCombo = new QComboBox;
    choosers->addWidget(conversationPersonaCombo);
    conversationQuestionCombo = new QComboBox;
    choosers->addWidget(conversationQuestionCombo);
    conversationShowButton = new QPushButton(tr("Show"));
    choosers->addWidget(conversationShowButton);
    connect(conversationShowButton, &QPushButton::clicked, this, &MainWindow::showConversation);

    conversationView = new QPlainTextEdit;
    conversationView->setReadOnly(true);
    layout->addWidget(conversationView);
    // Shown by loadQuestions once there is a question to talk about.
    conversationGroup->hide();
    return conversationGroup;
}

QWidget *MainWindow::buildQuestionPage()
{
    auto *page = new QWidget;
    auto *layout = new QVBoxLayout(page);

    questionView = new QTableView;
    questionView->setObjectName("questionView"_L1);
    questionView->setSelectionBehavior(QAbstractItemView::SelectRows);
    questionView->setSelectionMode(QAbstractItemView::SingleSelection);
    questionView->setDragDropMode(QAbstractItemView::InternalMove);
    layout->addWidget(questionView);
    connect(questionView, &QTableView::doubleClicked, this,
            [this](const QModelIndex &index) { editQuestion(index.row()); });

    auto *buttons = new QHBoxLayout;
    layout->addLayout(buttons);
    auto *addButton = new QPushButton(tr("Add"));
    buttons->addWidget(addButton);
    connect(addButton, &QPushButton::clicked, this, [this] { editQuestion(-1); });
    auto *deleteButton = new QPushButton(tr("Delete"));
    buttons->addWidget(deleteButton);
    connect(deleteButton, &QPushButton::clicked, this, &MainWindow::deleteQuestion);
    auto *upButton = new QPushButton(tr("Up"));
    buttons->addWidget(upButton);
    connect(upButton, &QPushButton::clicked, this, &MainWindow::moveQuestionUp);
    auto *downButton = new QPushButton(tr("Down"));
    buttons->addWidget(downButton);
    connect(downButton, &QPushButton::clicked, this, &MainWindow::moveQuestionDown);
    buttons->addStretch();
    return page;
}

QWidget *MainWindow::buildMarketplacePage()
{
    auto *page = new QLabel(u"Marketplace coming soon"_s);
    page->setAlignment(Qt::AlignCenter);
    return page;
}

QWidget *MainWindow::buildResultsPage()
{
    auto *page = new QWidget;
    auto *layout = new QVBoxLayout(page);

    resultsTable = new ResultsTable;
    resultsTable->setObjectName("resultsTable"_L1);
    resultsTable->setSizeAdjustPolicy(QAbstractScrollArea::AdjustToContents);
    resultsTable->setItemDelegate(new TextSizeDelegate(resultsTable));
    layout->addWidget(resultsTable);

    runSurveyButton = new QPushButton(tr("Run Survey"));
    runSurveyButton->setObjectName("runSurveyButton"_L1);
    layout->addWidget(runSurveyButton);
    connect(runSurveyButton, &QPushButton::clicked, this, &MainWindow::runSurvey);
    return page;
}

void MainWindow::attemptQuit()
{
    close();
}
