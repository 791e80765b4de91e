// The options of the commands that read a model file.
#pragma once

#include <array>
#include <optional>

#include "cli/CommandLine.h"
#include "modelreader/ModelFile.h"

namespace mapexport {

inline constexpr PositionalInfo kModelPositional{"FILE",
                                                 "a model file; its extension tells the layout"};

inline constexpr std::array kLayouts{"qob", "kob"};
inline constexpr OptionInfo kLayoutOption{.name = "layout",
                                          .kind = OptionKind::kText,
                                          .argument = "LAYOUT",
                                          .help = "qob or kob, whatever the extension is",
                                          .words = kLayouts};

// The rows of the options dialog's list boxes.
inline constexpr std::array kCoordinateSystems{"left-handed", "right-handed", "max", "inverse-max"};
inline constexpr std::array kTextureModes{"invert-y", "invert-x", "invert-xy", "max"};

/// The layout that --layout names; nothing unless it is given. Throws UsageError.
std::optional<ModelLayout> LayoutValue(const CommandLine& line);

}  // namespace mapexport
