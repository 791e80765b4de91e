// A Collada document in the form that the import library understands.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace mapexport {

/// `text`, a Collada document, changed so that the library gives each triangle the material that
/// the document gives it (a symbol that nothing is bound to is taken for a material's id). The
/// library takes some material of the document for triangles that have none; where a symbol of a
/// mesh is also the id of a material it ignores what an instance binds to it; and it mixes up the
/// triangles of a mesh whose instances have only some materials in common. In the changed text
/// triangles without a material have one of the name that the library gives to materials it makes
/// up. A mark of two-sided materials that stands in the extras of an effect, where the library does
/// not look for it, is repeated where it does. Empty when nothing has to be changed, and when the
/// text is no sound XML.
std::optional<std::string> PatchCollada(std::string_view text);

}  // namespace mapexport
