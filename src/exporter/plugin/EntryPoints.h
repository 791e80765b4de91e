// The four functions that the host looks for in the library.
#pragma once

#include "host/Plugin.h"

extern "C" {

const char* LibDescription();
int LibNumberClasses();
/// The class descriptor of MapExporter for index 0, null for any other index.
mapexport::ClassDesc* LibClassDesc(int i);
std::uint32_t LibVersion();
}
