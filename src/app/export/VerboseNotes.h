// The notes of --verbose.
#pragma once

#include "app/Messages.h"
#include "app/Stages.h"

namespace mapexport {

/// Notes the versions of the program and its libraries.
void NoteVersions(Messages& messages);

/// Notes that the lengths of the scene `name` are kept, unless a note has said by what they are
/// multiplied.
void NoteUnit(const std::string& name, Messages& messages);

/// Notes how long each stage took.
void NoteTimes(const Stages& stages, Messages& messages);

}  // namespace mapexport
