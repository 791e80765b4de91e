// The System of an export on the command line.
#pragma once

#include <optional>
#include <string>

#include "app/Stages.h"
#include "app/export/ExporterLog.h"
#include "cli/CommandLine.h"
#include "console/ConsoleSystem.h"

namespace mapexport {

/// Remembers the final values of the options dialog, whether they come from the command line, the
/// settings, the exporter or the user at a window. The time that the user takes is a stage. By the
/// time the exporter shows the dialog it has opened its log, so this then makes the user's folder
/// the current one again.
class ExportSystem : public ConsoleSystem {
 public:
  struct Values {
    bool weld = false;
    float weldDistance = 0;  ///< 0 when the box holds no number
    float voxelSize = 0;     ///< the same
    std::string cxp;         ///< path of the CXP database, empty without one
    /// What the command line could give for the same states. An option is left out where it has no
    /// such value: no row is selected, no database is named.
    GivenOptions options;
  };

  /// `settings`, `stages` and `log` must outlive the system.
  ExportSystem(const Options& options, SettingsStore& settings, Stages& stages, ExporterLog& log)
      : ConsoleSystem(options, settings),
        hasPerson_(options.presenter != nullptr),
        stages_(stages),
        log_(log) {}

  int DialogBoxParam(HINSTANCE module, int id, HWND owner, DialogProc* proc,
                     LPARAM parameter) override;
  void EndDialog(HWND dialog, int result) override;

  /// Nothing before the dialog has ended.
  const std::optional<Values>& DialogValues() const { return values_; }
  /// Whether the dialog ended with anything other than OK.
  bool Cancelled() const { return cancelled_; }

 private:
  std::string TextOf(HWND dialog, int id);
  std::string ValueOf(HWND dialog, const OptionInfo& option);
  GivenOptions OptionsOf(HWND dialog);

  const bool hasPerson_;
  Stages& stages_;
  ExporterLog& log_;
  std::optional<Values> values_;
  bool cancelled_ = false;
};

}  // namespace mapexport
