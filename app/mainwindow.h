#pragma once

#include <QCache>
#include <QMainWindow>
#include <QPointer>
#include <QSqlDatabase>

#include <optional>

class ChatLogWindow;
class QAction;
class QComboBox;
class QGroupBox;
class QPlainTextEdit;
class QPushButton;
class QSqlTableModel;
class QTableView;
class QTableWidget;
class ResultsTable;
class SurveyRunner;

/// The program's one window and the hub of its logic: it owns the project database and every view, and its slots are
/// the whole internal interface. Private slots are what menus and buttons trigger and ask the user for what they need;
/// public slots take the same as arguments, for outside code that drives the program through the meta-object.
///
/// A public slot that can fail returns bool; failures go to Qt's logging, never to a dialog. The order of the slots is
/// the order of the meta-object and part of the interface. Each group names the file that implements it.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit MainWindow(QWidget *parent);

    /// Notes that the project has changes that no file holds.
    void markDirty() { dirty = true; }

Q_SIGNALS:
    /// For observers outside the program: the user is about to import the pack at @p path (empty in test mode).
    void importRequested(const QString &path);

private Q_SLOTS:
    // project/projectdatabase.cpp
    void newProject();

    // project/projectfiles.cpp
    void openProject();
    void saveProject();
    void saveProjectAs();

    // packs/packimport.cpp
    void onImport();

    // project/projectview.cpp
    void applyTagFilter();
    void toggleCreated(bool checked);
    void toggleModified(bool checked);

    // preferences/showpreferences.cpp
    void showPreferences();

    // app/about.cpp
    void showAbout();

    // survey/runsurvey.cpp
    void runSurvey();

    // project/boilerplate.cpp
    void preambleChanged();
    void postambleChanged();

    // inspect/showconversation.cpp
    void showConversation();

    // app/mainwindow.cpp
    void attemptQuit();

public Q_SLOTS:
    // packs/packbrowsing.cpp
    void loadPack(const QString &path);

    // The refresh chain, each link ending in the next: project/projectview.cpp, questions/questionlist.cpp,
    // inspect/resultsgrid.cpp
    void loadProject();
    void loadQuestions();
    void loadResults();

    // packs/packimport.cpp
    void importPack(const QString &path);

    // project/projectfiles.cpp
    bool openProjectFromFile(const QString &path);
    bool saveProjectToFile(const QString &path);

    // questions/questionrecords.cpp: type is a stored word of questions/answertypes.h, labels the encoded column text
    void insertQuestion(const QString &prompt, const QString &type, bool reasoning, const QString &labels = QString());
    void updateQuestion(int id, const QString &prompt, const QString &type, bool reasoning,
                        const QString &labels = QString());

    // personas/personarecords.cpp: tags is any text that personas/tagtext.h can split
    void insertPersona(const QString &name, const QString &description, const QString &tags = QString());
    void updatePersona(const QString &uuid, const QString &name, const QString &description,
                       const QString &tags = QString());

    // packs/packexport.cpp
    bool exportPackToFile(const QString &path);

private Q_SLOTS:
    // packs/packexport.cpp
    void exportPack();

    // personas/personaeditor.cpp
    void newPersona();

    // personas/personarecords.cpp
    void copyPersona();
    void deletePersona();

    // personas/personaeditor.cpp
    void editPersona(int row, int column);

    // questions/questioneditor.cpp
    void editQuestion(int row);

private:
    // app/mainwindow.cpp: the steps of the constructor
    void buildMenus();
    void buildFileMenu();
    QWidget *buildPersonaPage();
    QWidget *buildBoilerplatePage();
    QGroupBox *buildConversationGroup();
    QWidget *buildQuestionPage();
    QWidget *buildMarketplacePage();
    QWidget *buildResultsPage();

    // project/projectfiles.cpp
    bool copyProjectFile(const QString &path, const QSqlDatabase &file);
    void closeEvent(QCloseEvent *event) override;

    // project/projectdatabase.cpp
    enum class ScriptLogging { Off, On };
    bool openProjectDatabase(const char *failure, ScriptLogging logging);
    void resetProjectTables();
    void dropQuestionModel();

    // project/boilerplate.cpp
    void showBoilerplate();
    void storeBoilerplate(const QVariant &preamble, const QVariant &postamble);

    // project/projectview.cpp
    void fillConversationPersonas();

    // personas/personarecords.cpp
    std::optional<QString> currentPersona() const;
    void syncPersonaTags(const QString &uuid, const QStringList &tags);

    // packs/packimport.cpp
    enum class ImportMode { Append, Replace };
    std::optional<ImportMode> askImportMode();
    void copyPack(const QSqlDatabase &pack, ImportMode mode);

    // questions/questionlist.cpp
    void createQuestionModel();
    void selectQuestions();
    void fillConversationQuestions();

    // questions/questionrecords.cpp
    void deleteQuestion();
    void moveQuestionUp();
    void moveQuestionDown();
    void swapQuestions(int row, int neighbour);

    // survey/runsurvey.cpp
    void showChatLog();
    void setRunControlsEnabled(bool enabled);
    void surveyFinished();

    QAction *newProjectAction = nullptr;
    QAction *openProjectAction = nullptr;
    QAction *saveProjectAction = nullptr;
    QAction *saveProjectAsAction = nullptr;
    QAction *importPackAction = nullptr;
    QAction *exportPackAction = nullptr;
    QAction *runSurveyAction = nullptr;
    QAction *preferencesAction = nullptr;
    QAction *showCreatedAction = nullptr;
    QAction *showModifiedAction = nullptr;
    QTabWidget *tabWidget = nullptr;
    QTableWidget *personaTable = nullptr;
    QComboBox *tagFilter = nullptr;
    QTableView *questionView = nullptr;
    ResultsTable *resultsTable = nullptr;
    QPushButton *runSurveyButton = nullptr;
    /// Rebuilt on every project change, null between those two moments.
    QSqlTableModel *questionModel = nullptr;
    /// The pack shown in place; set by loadPack, never cleared.
    QString packPath;
    /// The file that the project belongs to, empty for one never saved.
    QString projectPath;
    /// The connection "project": an in-memory database, open from the first newProject to the end of the process.
    QSqlDatabase db;
    /// The run in progress, or null.
    SurveyRunner *surveyRunner = nullptr;
    /// The log window, created by a run, or null; closing it destroys it.
    QPointer<ChatLogWindow> chatLogWindow;
    QWidget *boilerplateTab = nullptr;
    QPlainTextEdit *preambleEdit = nullptr;
    QPlainTextEdit *postambleEdit = nullptr;
    QGroupBox *conversationGroup = nullptr;
    QComboBox *conversationPersonaCombo = nullptr;
    QComboBox *conversationQuestionCombo = nullptr;
    QPlainTextEdit *conversationView = nullptr;
    QPushButton *conversationShowButton = nullptr;
    /// Changes that no file holds.
    bool dirty = false;
    /// Of the results grid: the reasoning by the JSON that it was parsed from, for as many answers as a large survey
    /// has.
    QCache<QString, QString> parsedReasonings{100'000};
};
