// The list box of a dialog.
#pragma once

#include <QListWidget>

namespace mapexport {

/// A single-selection list. Rows are as high as the font without space between them, so that as
/// many are visible as dialog units provide for.
class RowList : public QListWidget {
 public:
  explicit RowList(QWidget* parent);

  /// -1 for none.
  int SelectedRow() const;
};

}  // namespace mapexport
