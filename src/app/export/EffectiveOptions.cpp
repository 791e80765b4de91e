#include "app/export/EffectiveOptions.h"

namespace mapexport {

GivenOptions EffectiveOptions(const GivenOptions& given, const GivenOptions& controls) {
  GivenOptions effective = controls;
  for (const OptionInfo& option : ExportOptions()) {
    if (option.control != 0) continue;
    if (const auto found = given.find(option.name); found != given.end()) {
      effective.insert(*found);
    } else if (option.defaultValue != nullptr) {
      effective[option.name] = {option.defaultValue};
    }
  }
  return effective;
}

}  // namespace mapexport
