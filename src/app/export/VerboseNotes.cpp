#include "app/export/VerboseNotes.h"

#include <algorithm>
#include <chrono>

#include <fmt/format.h>

#include "app/BuiltIn.h"

namespace mapexport {

void NoteVersions(Messages& messages) {
  messages.Note("verbose",
                fmt::format("version {}, with {}", MAPEXPORT_VERSION, LibraryVersions()));
}

void NoteUnit(const std::string& name, Messages& messages) {
  const auto told = messages.Told();
  if (std::ranges::find(told, "scale", &Remark::code) != told.end()) return;
  messages.Note("verbose", fmt::format("{}: lengths are kept: the unit factor is 1", name));
}

void NoteTimes(const Stages& stages, Messages& messages) {
  using Milliseconds = std::chrono::duration<double, std::milli>;
  std::string times;
  for (const Stages::Time& time : stages.Times()) {
    times += fmt::format("{}{} {:.1f} ms", times.empty() ? "" : ", ", time.name,
                         Milliseconds(time.duration).count());
  }
  messages.Note("verbose", fmt::format("times: {}", times));
}

}  // namespace mapexport
