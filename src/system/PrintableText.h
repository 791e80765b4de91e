// Untrusted texts, made fit for a terminal.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace mapexport {

/// `text` with its invisible characters as "\u001B" or "\U000E0001" and bytes that are not UTF-8 as
/// "\xFF". What goes beyond `maxColumns` terminal columns is cut, and the cut shown as "...".
std::string PrintableText(std::string_view text, std::size_t maxColumns = 60);

/// The same between double quotes, for a message.
std::string Quoted(std::string_view text);

/// Terminal columns that a printable text takes.
std::size_t DisplayWidth(std::string_view text);

}  // namespace mapexport
