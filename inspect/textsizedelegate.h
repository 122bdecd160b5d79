#pragma once

#include <QHash>
#include <QSize>
#include <QStyledItemDelegate>

class QAbstractItemView;

/// A delegate for a view whose items are plain texts and whose columns fit their contents. It remembers the size of
/// each text that it has measured, so that a model filled anew with the same texts is not measured again.
class TextSizeDelegate : public QStyledItemDelegate
{
    Q_OBJECT

public:
    /// @p view is the one view that the delegate serves, and its parent.
    explicit TextSizeDelegate(QAbstractItemView *view);

    QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void startGeneration();

    /// The sizes asked for since the model was filled, and those of the previous filling. What neither of the last two
    /// fillings showed is forgotten.
    mutable QHash<QString, QSize> sizes;
    mutable QHash<QString, QSize> earlierSizes;
};
