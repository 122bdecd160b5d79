// Which texts of the question dialog go through translation, and in which context a translator finds them.

#include "tests/questions/questionform.h"
#include "tests/support/testcase.h"

#include <QTest>
#include <QTranslator>

using namespace Qt::StringLiterals;

/// Gives back each text with its context.
class ContextTranslator : public QTranslator
{
public:
    bool isEmpty() const override { return false; }
    QString translate(const char *context, const char *source, const char * /*disambiguation*/,
                      int /*n*/) const override
    {
        return QLatin1StringView(context) + u'/' + QLatin1StringView(source);
    }
};

/// The window's own texts that a dialog shows, without those of Qt.
static QStringList textsIn(const QWidget *dialog)
{
    QStringList texts;
    for (const auto labels = dialog->findChildren<QLabel *>(); const QLabel *label : labels)
        texts.append(label->text());
    for (const auto buttons = dialog->findChildren<QAbstractButton *>(); const QAbstractButton *button : buttons)
        texts.append(button->text());
    for (const auto choosers = dialog->findChildren<QComboBox *>(); const QComboBox *chooser : choosers)
        texts.append(items(chooser));
    texts.removeIf([](const QString &text) { return text.startsWith("QPlatformTheme/"_L1); });
    texts.sort();
    return texts;
}

class TestTranslatedDialog : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void captions_are_the_windows_and_the_list_of_labels_stays_plain()
    {
        Stage stage;
        ContextTranslator translator;
        QVERIFY(QCoreApplication::installTranslator(&translator));
        QStringList texts;
        QVERIFY(editByCaptions(stage, [&texts](const QWidget *dialog) { texts = textsIn(dialog); }));
        QCOMPARE(texts, QStringList({u"Add"_s,
                                     u"Down"_s,
                                     u"Far left"_s,
                                     u"Far right"_s,
                                     u"Likert Scale"_s,
                                     u"MainWindow/Adjudicated Question"_s,
                                     u"MainWindow/Allow web search first"_s,
                                     u"MainWindow/Ask"_s,
                                     u"MainWindow/Labels"_s,
                                     u"MainWindow/Prompt"_s,
                                     u"MainWindow/Provide reasoning"_s,
                                     u"MainWindow/Type"_s,
                                     u"MainWindow/always"_s,
                                     u"MainWindow/was"_s,
                                     u"MainWindow/wasn't"_s,
                                     u"MainWindow/when the answer to question"_s,
                                     u"Multiple Choice"_s,
                                     u"Numeric"_s,
                                     u"Option"_s,
                                     u"Rank Choices"_s,
                                     u"Remove"_s,
                                     u"Text"_s,
                                     u"Up"_s}));
    }

    void box_for_a_label_speaks_in_the_same_context()
    {
        Stage stage;
        ContextTranslator translator;
        QVERIFY(QCoreApplication::installTranslator(&translator));
        QString title;
        QStringList texts;
        QVERIFY(editByCaptions(stage, [&](QWidget *dialog) {
            const Modal box([&](const QWidget *asked) {
                title = asked->windowTitle();
                texts = textsIn(asked);
            });
            pressButton(dialog, u"Add"_s);
        }));
        QCOMPARE(title, u"MainWindow/Add Label"_s);
        QCOMPARE(texts, QStringList(u"MainWindow/Label:"_s));
    }

private:
    /// Opens the dialog of a new question.
    template<typename Work>
    static bool editByCaptions(Stage &stage, const Work &work)
    {
        const Modal modal(work);
        return stage.call("editQuestion", -1) && modal.wasAnswered();
    }
};

ORRINET_TEST(TestTranslatedDialog)
#include "tst_translateddialog.moc"
