#pragma once

#include <QDialog>

class QPlainTextEdit;

/// The live transcript of a survey run. Entries are only ever added; the text goes with the window.
class ChatLogWindow : public QDialog
{
    Q_OBJECT

public:
    explicit ChatLogWindow(QWidget *parent = nullptr);

    /// Adds an entry, of one or more lines, as it is.
    void appendLine(const QString &line);

private:
    QPlainTextEdit *view = nullptr;
};
