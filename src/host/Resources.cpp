#include "host/Resources.h"

#include <algorithm>
#include <cstring>

namespace mapexport {

struct Module {
  ModuleResources resources;
};

namespace {

template <typename Resource>
const Resource* FindById(std::span<const Resource> resources, int id) {
  const auto found = std::ranges::find(resources, id, &Resource::id);
  return found == resources.end() ? nullptr : &*found;
}

}  // namespace

HINSTANCE AttachModule(const ModuleResources& resources) {
  return new Module{resources};
}

void DetachModule(HINSTANCE module) {
  delete module;
}

int LoadString(HINSTANCE module, int id, char* buffer, int size) {
  buffer[0] = '\0';
  const StringResource* found =
      module == nullptr ? nullptr : FindById(module->resources.strings, id);
  if (found == nullptr) return 0;
  const std::size_t length = std::min(std::strlen(found->text), static_cast<std::size_t>(size - 1));
  std::memcpy(buffer, found->text, length);
  buffer[length] = '\0';
  return static_cast<int>(length);
}

const DialogTemplate* FindDialog(HINSTANCE module, int id) {
  return module == nullptr ? nullptr : FindById(module->resources.dialogs, id);
}

const CursorImage* FindCursor(HINSTANCE module, int id) {
  return module == nullptr ? nullptr : FindById(module->resources.cursors, id);
}

}  // namespace mapexport
