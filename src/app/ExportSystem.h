// The System of an export on the command line.
#pragma once

#include <optional>
#include <string>

#include "app/ExporterLog.h"
#include "app/Stages.h"
#include "console/ConsoleSystem.h"

namespace mapexport {

/// Remembers how the options dialog is left, whether the values come from the command line, from
/// the settings, from the exporter itself or from a person at a window. The person's time is a
/// stage of its own. When the dialog is asked for, the exporter has opened its log: from then on
/// the person's current folder is its own.
class ExportSystem : public ConsoleSystem {
 public:
  struct Values {
    bool weld = false;
    float weldDistance = 0;  ///< 0 when the box shows no number
    std::string cxp;         ///< path of the CXP database, empty without one
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

  /// Nothing until the dialog has ended.
  const std::optional<Values>& DialogValues() const { return values_; }
  /// Whether the dialog was left, and not with OK.
  bool Cancelled() const { return cancelled_; }

 private:
  std::string TextOf(HWND dialog, int id);

  const bool hasPerson_;
  Stages& stages_;
  ExporterLog& log_;
  std::optional<Values> values_;
  bool cancelled_ = false;
};

}  // namespace mapexport
