// Writes outputs and reports what happened to them.
#pragma once

#include <functional>
#include <new>
#include <ostream>
#include <span>

#include "app/Messages.h"
#include "output/OutputPlace.h"
#include "output/OutputTarget.h"
#include "system/StandardError.h"

namespace mapexport {

/// Writes a complete file or none, or to standard output. Returns false when the reader of standard
/// output has closed it, which is not an error. Throws RunError.
bool WriteOutput(const OutputTarget& target, const std::function<void(std::ostream&)>& write,
                 Messages& messages);

/// Prints warnings about places that are committed, then calls `tellMore`. The output is in place,
/// so this can't fail any more: when memory runs out, only that is printed.
template <typename TellMore>
void TellPlaced(std::span<OutputPlace* const> places, Messages& messages,
                const TellMore& tellMore) {
  try {
    for (const OutputPlace* const place : places) {
      for (const OutputPlace::Warning& warning : place->Warnings()) {
        messages.Warning(warning.code, warning.text);
      }
    }
    tellMore();
  } catch (const std::bad_alloc&) {
    WriteWithoutMemory("warning", "failed", "done, but memory ran out while reporting it");
  }
}

void TellPlaced(OutputPlace& place, Messages& messages);

}  // namespace mapexport
