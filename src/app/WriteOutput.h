// Writes outputs, and tells what there is to tell once they are in their places.
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

/// Writes a file, whole or not at all, or to standard output. Returns false when the reader of
/// standard output has gone away, which is no error of anyone. Throws RunError.
bool WriteOutput(const OutputTarget& target, const std::function<void(std::ostream&)>& write,
                 Messages& messages);

/// Tells what there is to tell of committed places, and then what `tellMore` tells. It is too late
/// for a failure: when memory runs out for the words, that is all that is said.
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
    WriteLines("mapexport: warning: done, but memory ran out for telling all of it\n");
  }
}

void TellPlaced(OutputPlace& place, Messages& messages);

}  // namespace mapexport
