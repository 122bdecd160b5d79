#pragma once

#include <QDialog>

class QLineEdit;

/// The key of the chat API and the two model names. OK stores all three unchanged; nothing is checked or trimmed.
class PreferencesDialog : public QDialog
{
    Q_OBJECT

public:
    explicit PreferencesDialog(QWidget *parent);

private Q_SLOTS:
    void accept() override;

private:
    QLineEdit *apiKeyEdit = nullptr;
    QLineEdit *personaModelEdit = nullptr;
    QLineEdit *adjudicatorModelEdit = nullptr;
};
