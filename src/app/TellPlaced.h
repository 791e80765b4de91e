// What is told once files are in their places.
#pragma once

#include <new>
#include <span>

#include "app/Messages.h"
#include "output/OutputPlace.h"
#include "system/StandardError.h"

namespace mapexport {

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

inline void TellPlaced(OutputPlace& place, Messages& messages) {
  OutputPlace* const places[] = {&place};
  TellPlaced(places, messages, [] {});
}

}  // namespace mapexport
