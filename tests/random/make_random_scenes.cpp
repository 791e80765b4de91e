// Writes the scenes that FuzzScene makes of random bytes, the same in every run:
//
//   make_random_scenes COUNT FOLDER
//
// Their numbers are small enough that no export overflows: no rule fixes the sign of a NaN.
#include <charconv>
#include <fstream>
#include <iostream>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "fuzz/FuzzScene.h"
#include "scene/SceneFile.h"

int main(int argc, char** argv) {
  using namespace mapexport;
  constexpr std::size_t kBytes = 4096;
  constexpr float kLargest = 1e6f;
  unsigned count = 0;
  const std::string_view text(argc == 3 ? argv[1] : "");
  const auto parsed = std::from_chars(text.data(), text.data() + text.size(), count);
  if (parsed.ptr != text.data() + text.size() || count == 0) {
    std::cerr << "usage: make_random_scenes COUNT FOLDER\n";
    return 2;
  }
  for (unsigned seed = 1; seed <= count; ++seed) {
    std::mt19937 random(seed);
    std::vector<std::uint8_t> bytes(kBytes);
    for (std::uint8_t& byte : bytes) byte = static_cast<std::uint8_t>(random());
    FuzzBytes in(bytes.data(), bytes.size(), kLargest);
    const std::string path = argv[2] + ("/random-" + std::to_string(seed)) + ".scene.json";
    std::ofstream out(path);
    WriteSceneFile(FuzzScene(in).Make(), out);
    out.close();
    if (!out) {
      std::cerr << path << ": can't be written\n";
      return 1;
    }
  }
}
