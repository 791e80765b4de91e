#include "window/RowList.h"

#include <QStyledItemDelegate>

namespace mapexport {
namespace {

class RowDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    QSize size = QStyledItemDelegate::sizeHint(option, index);
    size.setHeight(option.fontMetrics.height());
    return size;
  }
};

}  // namespace

RowList::RowList(QWidget* parent) : QListWidget(parent) {
  setSelectionMode(QAbstractItemView::SingleSelection);
  setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  setTabKeyNavigation(false);
  setItemDelegate(new RowDelegate(this));
}

int RowList::SelectedRow() const {
  const QList<QListWidgetItem*> selected = selectedItems();
  return selected.isEmpty() ? -1 : row(selected.first());
}

}  // namespace mapexport
