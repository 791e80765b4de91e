// The System of an export on the command line.
#pragma once

#include <optional>
#include <string>

#include "console/ConsoleSystem.h"

namespace mapexport {

/// Remembers the values with which the options dialog is left, whether they come from the command
/// line, from the settings or from the exporter itself.
class ExportSystem : public ConsoleSystem {
 public:
  struct Values {
    bool weld = false;
    float weldDistance = 0;  ///< 0 when the box shows no finite number
    std::string cxp;         ///< path of the CXP database, empty without one
  };

  using ConsoleSystem::ConsoleSystem;

  void EndDialog(HWND dialog, int result) override;

  /// Nothing until the dialog has ended.
  const std::optional<Values>& DialogValues() const { return values_; }

 private:
  std::string TextOf(HWND dialog, int id);

  std::optional<Values> values_;
};

}  // namespace mapexport
