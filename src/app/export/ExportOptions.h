// The arguments and the option table of `export`.
#pragma once

#include <array>
#include <span>

#include "cli/CommandInfo.h"
#include "system/RemarkCode.h"

namespace mapexport {

inline constexpr const char* kOutputFolder = "output-folder";
inline constexpr const char* kJobs = "jobs";
inline constexpr OptionInfo kAllowOption{
    .name = "allow",
    .kind = OptionKind::kText,
    .argument = "CODE",
    .help =
        "let warnings of that code pass --strict, for example list-too-long; can be repeated; "
        "--report writes the codes",
    .words = kRemarkCodes,
    .repeats = true};
inline constexpr std::array kMessageForms{"text", "json"};
inline constexpr OptionInfo kMessagesOption{
    .name = "messages",
    .kind = OptionKind::kText,
    .argument = "FORM",
    .help =
        "the form of messages: text, or json, in which each line of standard error is one object",
    .words = kMessageForms};

std::span<const PositionalInfo> ExportPositionals();

/// All options of the command; those that operate controls come in the order of the dialog's
/// control table.
std::span<const OptionInfo> ExportOptions();

}  // namespace mapexport
