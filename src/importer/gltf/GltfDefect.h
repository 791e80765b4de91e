// What is wrong with a glTF file that the import library refused.
#pragma once

#include <string>
#include <string_view>

namespace mapexport {

class FileText;

/// What breaks the glTF document `text`, with the place: JSON that is none, a version that can't be
/// read; empty when neither is. Throws SceneError, which names `path`, when the document is no
/// object or its version no text.
std::string GltfDefect(const std::string& path, const FileText& text);

/// The same for a binary glTF file, whose parts are checked against its size first.
std::string GlbDefect(std::string_view bytes);

}  // namespace mapexport
