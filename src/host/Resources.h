// The resources of a plug-in library (texts, dialogs, cursors), and how the host gets them.
#pragma once

#include <span>
#include <string_view>

namespace mapexport {

struct StringResource {
  int id;
  const char* text;
};

enum class ControlKind {
  kLabel,
  kEdit,
  kReadOnlyEdit,
  kCheckBox,
  kButton,
  kDefaultButton,
  kListBox
};

/// One control of a dialog. Position and size are dialog units: a quarter of the font's average
/// character width, an eighth of its height. Edit boxes scroll horizontally; list boxes are
/// single-selection.
struct DialogControl {
  int id;  ///< -1: no code refers to the control
  ControlKind kind;
  const char* text;
  int x, y, width, height;
};

struct DialogTemplate {
  int id;
  const char* title;
  int width, height;                        ///< dialog units
  std::span<const DialogControl> controls;  ///< in tab order
};

/// A monochrome cursor of 32 x 32 pixels: 'X' black, 'o' white, anything else transparent.
struct CursorImage {
  int id;
  int hotX, hotY;  ///< pixel that points
  std::span<const std::string_view> rows;
};

struct ModuleResources {
  std::span<const StringResource> strings;
  std::span<const DialogTemplate> dialogs;
  std::span<const CursorImage> cursors;
};

/// A loaded library, as the host knows it.
struct Module;
using HINSTANCE = Module*;

/// Tells the host that a library was loaded and what it carries; the result is the library's module
/// handle. The resources must live until DetachModule.
HINSTANCE AttachModule(const ModuleResources& resources);
/// Tells the host that the library goes away. The handle means nothing afterwards.
void DetachModule(HINSTANCE module);

/// The text of string `id` cut to `size` - 1 bytes and NUL-terminated in `buffer`. Returns its
/// length, 0 (and an empty buffer) when the module has no such string. `size` is at least 1.
int LoadString(HINSTANCE module, int id, char* buffer, int size);
/// The module's dialog `id`, null when it has none.
const DialogTemplate* FindDialog(HINSTANCE module, int id);
/// The module's cursor `id`, null when it has none.
const CursorImage* FindCursor(HINSTANCE module, int id);

}  // namespace mapexport
