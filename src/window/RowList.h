// The list box of a dialog.
#pragma once

#include <QListWidget>

namespace mapexport {

/// Single-selection, with rows as high as the font and no space between them, so that as many show
/// as dialog units provide for.
class RowList : public QListWidget {
 public:
  explicit RowList(QWidget* parent);

  /// -1 for none.
  int SelectedRow() const;
};

}  // namespace mapexport
