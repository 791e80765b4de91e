#include "exporter/plugin/RunExport.h"

#include <fstream>
#include <locale>
#include <optional>

#include "exporter/base/ProcessState.h"
#include "exporter/materials/LoadCxp.h"
#include "exporter/plugin/ExportModel.h"
#include "exporter/plugin/OptionsDialog.h"
#include "exporter/plugin/ResourceIds.h"
#include "host/System.h"

namespace mapexport {
namespace {

/// The run's model; the current scene as long as it lives.
class CurrentModel {
 public:
  explicit CurrentModel(TimeValue time) { State().currentScene = &model_.emplace(time); }
  ~CurrentModel() {
    model_.reset();
    State().currentScene = nullptr;
  }
  CurrentModel(const CurrentModel&) = delete;
  CurrentModel& operator=(const CurrentModel&) = delete;

  ExportModel* operator->() { return &*model_; }

 private:
  std::optional<ExportModel> model_;
};

bool DialogCancelled() {
  const ProcessState& state = State();
  return TheSystem().DialogBoxParam(state.module, kOptionsDialog,
                                    state.currentInterface->GetMAXHWnd(), OptionsDialogProc,
                                    0) == 0;
}

}  // namespace

bool RunExport(const PathString& path, INode* root, TimeValue time) {
  std::ofstream file;
  file.imbue(std::locale::classic());  // the host's global locale may convert characters
  CurrentModel model(time);
  if (DialogCancelled()) return false;

  ProcessState& state = State();
  state.transparentTextures.Clear();
  LoadCxp();
  model->Gather(root);
  const ExportOptions& options = state.options;
  model->PostProcess(options.weldVertices, options.weldingDistance, options.cleanVertexAttributes);

  file.open(path.Text(), std::ios::out | std::ios::binary | std::ios::trunc);
  if (!file.is_open()) return false;
  PathString extension = path.Extension();
  extension.LowerCase();
  if (extension == "qob") {
    model->WriteQob(file);
  } else {
    model->WriteKob(file);
  }
  return true;
}

}  // namespace mapexport
