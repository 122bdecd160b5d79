#include "inspect/textsizedelegate.h"

#include <QAbstractItemView>
#include <QEvent>

#include <utility>

TextSizeDelegate::TextSizeDelegate(QAbstractItemView *view)
    : QStyledItemDelegate(view)
{
    view->installEventFilter(this);
    connect(view->model(), &QAbstractItemModel::modelReset, this, &TextSizeDelegate::startGeneration);
}

QSize TextSizeDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const
{
    // In a given width the text would be wrapped; asked for a column's width, the view gives none.
    if (option.rect.isValid())
        return QStyledItemDelegate::sizeHint(option, index);

    const QString text = index.data(Qt::DisplayRole).toString();
    if (const auto known = sizes.constFind(text); known != sizes.cend())
        return *known;
    const auto earlier = earlierSizes.constFind(text);
    const QSize size = earlier != earlierSizes.cend() ? *earlier : QStyledItemDelegate::sizeHint(option, index);
    sizes.insert(text, size);
    return size;
}

bool TextSizeDelegate::eventFilter(QObject *watched, QEvent *event)
{
    if (watched != parent())
        return QStyledItemDelegate::eventFilter(watched, event);
    switch (event->type()) {
    case QEvent::FontChange:
    case QEvent::StyleChange:
    case QEvent::DevicePixelRatioChange:
        sizes.clear();
        earlierSizes.clear();
        break;
    default:
        break;
    }
    return false;
}

void TextSizeDelegate::startGeneration()
{
    // A filling that was never laid out, in a tab behind, has asked for nothing.
    if (!sizes.isEmpty())
        earlierSizes = std::exchange(sizes, {});
}
