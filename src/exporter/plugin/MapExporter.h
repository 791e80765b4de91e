// The scene exporter that the host calls.
#pragma once

#include "exporter/plugin/SettingsKey.h"
#include "host/Plugin.h"

namespace mapexport {

/// Answers the host's questions about the exporter and carries out exports. It keeps nothing from
/// one export to the next: that is the process's state.
class MapExporter final : public SceneExport {
 public:
  MapExporter() : settings_(RegistryRoot::kLocalMachine) {}
  ~MapExporter() override = default;

  int ExtCount() override;
  const char* Ext(int i) override;
  const char* LongDesc() override;
  const char* ShortDesc() override;
  const char* AuthorName() override;
  const char* CopyrightMessage() override;
  const char* OtherMessage1() override;
  const char* OtherMessage2() override;
  unsigned Version() override;
  void ShowAbout(HWND owner) override;

  /// Exports the host's scene to the model file `name` (".map" is appended to a name without
  /// extension): loads the options, runs the export with its dialog, shows a message when the file
  /// was written, saves the options. `suppressPrompts` does not suppress the dialog. An exception
  /// ends the export at once and is reported to the debug log; none leaves this function. Always 1.
  int DoExport(const char* name, ExpInterface* exportInterface, Interface* hostInterface,
               bool suppressPrompts) override;

 private:
  void Export(const char* name, Interface& host);

  SettingsKey settings_;
};

}  // namespace mapexport
