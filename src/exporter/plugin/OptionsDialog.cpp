#include "exporter/plugin/OptionsDialog.h"

#include <array>
#include <optional>

#include "exporter/base/NumberText.h"
#include "exporter/base/ProcessState.h"
#include "exporter/plugin/BrowseForFile.h"
#include "exporter/plugin/OptionNames.h"
#include "exporter/plugin/ResourceIds.h"

namespace mapexport {
namespace {

struct FloatEdit {
  int id;
  float ExportOptions::*field;
};
constexpr std::array<FloatEdit, 5> kFloatEdits{{
    {kWeldDistanceEdit, &ExportOptions::weldingDistance},
    {kMinTriangleAreaEdit, &ExportOptions::tVertexDistance},
    {kSnapDimensionEdit, &ExportOptions::snapDistance},
    {kLightingMultiplierEdit, &ExportOptions::lightingMultiplier},
    {kVoxelSizeEdit, &ExportOptions::geometryVoxelSize},
}};

void FillList(HWND dialog, int id, const OptionNames& names, std::int32_t selected) {
  System& system = TheSystem();
  for (int i = 0; i < names.count; ++i) {
    system.ListBoxAddString(dialog, id, names.names[static_cast<std::size_t>(i)].data());
  }
  system.ListBoxSetCurSel(dialog, id, selected);
}

void ShowOptions(HWND dialog, const ExportOptions& options) {
  System& system = TheSystem();
  for (const FloatEdit& edit : kFloatEdits) {
    system.SetDlgItemText(dialog, edit.id, FormatFloat(options.*edit.field).c_str());
  }
  system.SetDlgItemText(dialog, kCxpFilenameEdit, options.cxpFilename.data());
  system.CheckDlgButton(dialog, kWeldVerticesBox, options.weldVertices);
  system.CheckDlgButton(dialog, kRemoveTVerticesBox, options.removeTVertices);
  system.CheckDlgButton(dialog, kSnapToGridBox, options.snapToGrid);
  system.CheckDlgButton(dialog, kCleanAttributesBox, options.cleanVertexAttributes);
  FillList(dialog, kCoordinateSystemList, kCoordinateSystemNames, options.coordinateSystem);
  FillList(dialog, kTextureCoordinatesList, kTextureCoordinateNames, options.textureCoordinateMode);
}

CStr TextOf(HWND dialog, int id) {
  std::array<char, 256> text{};
  TheSystem().GetDlgItemText(dialog, id, text.data(), static_cast<int>(text.size()));
  return text.data();
}

void TakeEdits(HWND dialog, ExportOptions& options) {
  for (const FloatEdit& edit : kFloatEdits) {
    options.*edit.field = static_cast<float>(LeadingNumber(TextOf(dialog, edit.id).data()));
  }
  options.cxpFilename = TextOf(dialog, kCxpFilenameEdit);
}

void SwitchWeldingOn(HWND dialog, ExportOptions& options) {
  TheSystem().CheckDlgButton(dialog, kWeldVerticesBox, true);
  options.weldVertices = true;
}

bool OnClick(HWND dialog, int id, ExportOptions& options) {
  const bool checked = TheSystem().IsDlgButtonChecked(dialog, id);
  switch (id) {
    case kWeldVerticesBox:
      options.weldVertices = checked;
      if (options.removeTVertices) SwitchWeldingOn(dialog, options);
      return true;
    case kRemoveTVerticesBox:
      options.removeTVertices = checked;
      if (checked) SwitchWeldingOn(dialog, options);
      return true;
    case kSnapToGridBox:
      options.snapToGrid = checked;
      return true;
    case kCleanAttributesBox:
      options.cleanVertexAttributes = checked;
      return true;
    case kTalvernLightFormatBox:
      options.talvernLightFormat = checked;
      return true;
    case kBrowseButton: {
      constexpr std::array<const char*, 1> kExtensions{"cxp"};
      if (const std::optional<CStr> path = BrowseForFile(dialog, kExtensions, nullptr)) {
        options.cxpFilename = *path;
        TheSystem().SetDlgItemText(dialog, kCxpFilenameEdit, path->data());
      }
      return true;
    }
    case IDOK:
      TakeEdits(dialog, options);
      TheSystem().EndDialog(dialog, 1);
      return true;
    case IDCANCEL:
      TheSystem().EndDialog(dialog, 0);
      return true;
    default:
      return false;
  }
}

bool OnSelectionChange(HWND dialog, int id, ExportOptions& options) {
  switch (id) {
    case kCoordinateSystemList:
      options.coordinateSystem = TheSystem().ListBoxGetCurSel(dialog, id);
      return true;
    case kTextureCoordinatesList:
      options.textureCoordinateMode = TheSystem().ListBoxGetCurSel(dialog, id);
      return true;
    default:
      return false;
  }
}

}  // namespace

bool OptionsDialogProc(HWND dialog, unsigned message, WPARAM wParam, LPARAM /*lParam*/) {
  ExportOptions& options = State().options;
  if (message == WM_INITDIALOG) {
    ShowOptions(dialog, options);
    return true;
  }
  if (message != WM_COMMAND) return false;
  switch (CommandNotification(wParam)) {
    case BN_CLICKED:
      return OnClick(dialog, CommandId(wParam), options);
    case LBN_SELCHANGE:
      return OnSelectionChange(dialog, CommandId(wParam), options);
    default:
      return false;
  }
}

}  // namespace mapexport
