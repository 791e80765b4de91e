// Memory for the program and its libraries, on large pages. A scene of a million triangles touches
// 80,000 small pages for the first time, and that alone is a fifth of an export. Blocks of 2 MiB
// and more ask for large pages in `operator new`.
#pragma once

namespace mapexport {

/// Puts the heap, where smaller blocks are, on large pages, for the 32 MiB that it takes next. Call
/// it once, before the first scene.
void PutHeapOnLargePages();

}  // namespace mapexport
