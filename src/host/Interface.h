// What the host offers an exporter during an export.
#pragma once

#include <cstddef>

#include "host/INode.h"
#include "host/Types.h"

namespace mapexport {

/// The host application.
class Interface {
 public:
  virtual ~Interface() = default;
  /// The time every evaluation of the export uses.
  virtual TimeValue GetTime() const = 0;
  /// The scene's root node; never null.
  virtual INode* GetRootNode() const = 0;
  /// The host's main window, the owner of dialogs; null when the host has no window.
  virtual HWND GetMAXHWnd() const = 0;
  /// The most entries that a list of a geometry group may have for the programs that read the
  /// export: an exporter divides groups with longer lists. 0, unless a host says otherwise: any
  /// number.
  virtual std::size_t GetLongestList() const { return 0; }
};

/// The host's enumeration service for exporters. This exporter walks the node tree itself.
class ExpInterface {
 public:
  virtual ~ExpInterface() = default;
};

}  // namespace mapexport
