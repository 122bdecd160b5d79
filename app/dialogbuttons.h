#pragma once

class QDialog;
class QDialogButtonBox;

/// The buttons OK and Cancel, which accept and reject a dialog. They belong to it; their place in its layout is the
/// caller's matter.
QDialogButtonBox *okAndCancel(QDialog *dialog);
