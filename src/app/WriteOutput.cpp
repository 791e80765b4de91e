#include "app/WriteOutput.h"

#include "system/StandardOutput.h"

namespace mapexport {

bool WriteOutput(const OutputTarget& target, const std::function<void(std::ostream&)>& write,
                 Messages& messages) {
  if (target.isStandardOutput) return PrintResult(write);
  OutputPlace place(target, write);
  place.Commit();
  TellPlaced(place, messages);
  return true;
}

void TellPlaced(OutputPlace& place, Messages& messages) {
  OutputPlace* const places[] = {&place};
  TellPlaced(places, messages, [] {});
}

}  // namespace mapexport
