// Damaged copies of model files, in one process: read as every command reads them, and, where they
// are still sound, through all that `inspect`, `convert` and `view` do with them.
//
//   DamageModels SEED ROUNDS FIRST STEP PROGRESS FILE...
//
// The copies of a file: cut at every byte; every 32-bit number replaced by 0, 1, 0x7FFFFFFF and
// 0xFFFFFFFF, at every offset and so in every size and count; every bit flipped; and ROUNDS copies
// with several damages. They count through all files; those from FIRST on are tried, each STEP-th.
// The file PROGRESS holds the number of the one at hand, for when the process does not survive it.

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <exception>
#include <fstream>
#include <iterator>
#include <random>
#include <span>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include <fcntl.h>
#include <mapexport/ModelReader.h>
#include <unistd.h>

#include "convert/ConvertModel.h"
#include "modelreader/ModelJson.h"
#include "modelreader/ModelText.h"
#include "modelreader/ReadModelFile.h"
#include "view/WritePage.h"

namespace {

using namespace mapexport;
using Bytes = std::vector<std::uint8_t>;

constexpr std::array<std::uint32_t, 4> kFieldValues{0, 1, 0x7FFFFFFF, 0xFFFFFFFF};
constexpr unsigned kSeconds = 20;  // far more than any copy takes

struct Counts {
  std::size_t tried = 0, sound = 0, converted = 0;
};

void PutNumber(Bytes& bytes, std::size_t at, std::uint32_t value) {
  for (std::size_t i = 0; i < 4 && at + i < bytes.size(); ++i) {
    bytes[at + i] = static_cast<std::uint8_t>(value >> (8 * i));
  }
}

void DamageSomewhere(Bytes& bytes, std::mt19937& random) {
  if (bytes.empty()) return;
  const auto at = static_cast<std::ptrdiff_t>(random() % bytes.size());
  const auto length =
      std::min(static_cast<std::ptrdiff_t>(random() % 64 + 1), std::ssize(bytes) - at);
  const auto begin = bytes.begin() + at;
  switch (random() % 6) {
    case 0:
      bytes.erase(begin, begin + length);
      break;
    case 1: {
      const Bytes block(begin, begin + length);
      bytes.insert(begin, block.begin(), block.end());
      break;
    }
    case 2:
      std::rotate(begin, begin + length / 2, begin + length);
      break;
    case 3:
      PutNumber(bytes, static_cast<std::size_t>(at), kFieldValues[random() % 4]);
      break;
    case 4:  // what floats are infinite or NaN with
      PutNumber(bytes, static_cast<std::size_t>(at), 0x7F800000 | (random() % 2 << 31));
      break;
    default:
      *begin = static_cast<std::uint8_t>(random());
  }
}

/// Number `n` of the copies of `whole`.
Bytes Damaged(const Bytes& whole, std::size_t n, std::uint32_t seed) {
  Bytes bytes = whole;
  if (n < whole.size()) {
    bytes.resize(n);
  } else if ((n -= whole.size()) < kFieldValues.size() * whole.size()) {
    PutNumber(bytes, n / kFieldValues.size(), kFieldValues[n % kFieldValues.size()]);
  } else if ((n -= kFieldValues.size() * whole.size()) < 8 * whole.size()) {
    bytes[n / 8] = static_cast<std::uint8_t>(bytes[n / 8] ^ (1U << (n % 8)));
  } else {
    std::mt19937 random(seed + static_cast<std::uint32_t>(n));
    for (std::uint32_t left = random() % 4 + 1; left > 0; --left) DamageSomewhere(bytes, random);
  }
  return bytes;
}

void Require(bool holds, const std::string& what) {
  if (!holds) throw std::logic_error(what);
}

void RequirePrintable(const std::string& text, bool isLine) {
  for (const char c : text) {
    Require(static_cast<unsigned char>(c) >= ' ' || (c == '\n' && !isLine),
            "a control character is printed: " + text);
  }
}

void Convert(const ModelFile& model, std::size_t n, Counts& counts) {
  for (const TargetFormat& format : TargetFormats()) {
    const ExportedSpace exported{static_cast<int>(n % 4), static_cast<int>(n / 4 % 4)};
    try {
      const std::string name = "model" + std::string(format.extension);
      for (const auto& file : ConvertModel(model, name, format, exported, format.hostUnits).files) {
        Require(!file.bytes.empty(), "an empty file for " + name);
      }
      ++counts.converted;
    } catch (const ConvertError& error) {
      RequirePrintable(error.what(), true);
    }
  }
}

void Try(const Bytes& bytes, ModelLayout layout, std::size_t n, Counts& counts) {
  const ModelReadResult read = ReadModelBytes(std::as_bytes(std::span(bytes)), layout);
  for (const ModelProblem& problem : read.problems) RequirePrintable(ToLine(problem), true);
  ++counts.tried;
  if (!read.Sound()) return;
  ++counts.sound;
  reader::Model opened;
  Require(opened.Open(bytes.data(), bytes.size(), layout), "engines do not open a sound file");
  std::ostringstream text, json;
  WriteModelText(read.model, text);
  RequirePrintable(text.str(), false);
  WriteModelJson(read.model, n % 2 == 0, json);
  RequirePrintable(json.str(), false);
  Convert(read.model, n, counts);
  std::ostringstream page;
  if (CanWritePage()) WritePage(read.model, {"model", static_cast<int>(n % 4)}, page);
}

int Run(std::span<char*> arguments) {
  const auto number = [&](std::size_t i) { return std::stoul(arguments[i]); };
  const auto seed = static_cast<std::uint32_t>(number(1));
  const std::size_t rounds = number(2), step = number(4);
  std::size_t next = number(3), first = 0;
  const int progress = open(arguments[5], O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  Counts counts;
  for (const std::string path : arguments.subspan(6)) {
    std::ifstream file(path, std::ios::binary);
    const Bytes whole{std::istreambuf_iterator<char>(file), {}};
    Require(!whole.empty(), path + " can't be read");
    const std::size_t copies = 13 * whole.size() + rounds;
    for (; next < first + copies; next += step) {
      const std::string shown = std::to_string(next) + "\n";
      Require(pwrite(progress, shown.data(), shown.size(), 0) > 0, "no progress can be told");
      alarm(kSeconds);
      Try(Damaged(whole, next - first, seed), reader::LayoutOfName(path), next, counts);
    }
    first += copies;
  }
  std::printf("%zu copies, %zu sound, %zu files converted\n", counts.tried, counts.sound,
              counts.converted);
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    if (argc < 7) throw std::invalid_argument("SEED ROUNDS FIRST STEP PROGRESS FILE...");
    return Run({argv, static_cast<std::size_t>(argc)});
  } catch (const std::exception& error) {
    std::fprintf(stderr, "DamageModels: %s\n", error.what());
    return 1;
  }
}
