// The tokenizer against its edge cases and, on random texts, against its definition.
#include <istream>

#include "exporter/materials/TextStreambuf.h"
#include "exporter/materials/Tokenizer.h"
#include "reference/LiteralTokenizer.h"
#include "support/Testing.h"

namespace mapexport {
namespace {

using namespace std::string_literals;

TEST(TextStreambuf, DropsCarriageReturnsBeforeLineFeeds) {
  const std::string ends[][2] = {{"\r\n", "\n"},
                                 {"\r\r\n\n", "\r\n\n"},
                                 {"\r", "\r"},
                                 {"\n\r", "\n\r"},
                                 {"\r\n\r\nb", "\n\nb"}};
  for (const auto& [written, seen] : ends) {
    for (const std::size_t size : {0u, 4092u, 4093u, 4094u, 4095u, 4096u, 8191u}) {
      std::stringbuf file(std::string(size, 'a') + written);
      TextStreambuf text(file);
      EXPECT_EQ(std::string(std::istreambuf_iterator<char>(&text), {}),
                std::string(size, 'a') + seen)
          << size;
    }
  }
}

/// Text that crowds the special characters and the limit of a line.
std::string RandomText(std::mt19937& random) {
  const std::string pieces[] = {" ",  "\t",   "\n",   "\r\n", "\r",   "\"",  "/",
                                "*",  "//",   "/*",   "*/",   "\0"s,  "a",   "b\xFF",
                                "\n", "\"x ", "*\n/", " /* ", "\r\r", "\n\n"};
  std::string text;
  for (std::size_t count = random() % 40; count > 0; --count) {
    const std::size_t lineStart = text.rfind('\n') + 1;
    const std::size_t toLimit = 1024 - (text.size() - lineStart) % 1024;
    if (random() % 40 == 0) {
      text.append(toLimit - std::min<std::size_t>(toLimit, random() % 5), random() % 2 ? 'x' : ' ');
    } else {
      text += pieces[random() % std::size(pieces)];
    }
  }
  return text;
}

TEST(Tokenizer, EqualsItsDefinition) {
  std::mt19937 random(FirstSeed() + 20260);
  for (int round = 0; round < 6000; ++round) {
    const std::string content = RandomText(random);
    std::stringbuf file(content);
    TextStreambuf text(file);
    std::istream input(&text);
    Tokenizer tokenizer(input);
    LiteralTokenizer literal(content);
    bool more = true;
    while (more) {
      more = literal.ReadToken();
      ASSERT_EQ(tokenizer.ReadToken(), more) << testing::PrintToString(content);
      ASSERT_EQ(tokenizer.Token(), literal.Token()) << testing::PrintToString(content);
      ASSERT_EQ(input.good(), literal.StreamGood()) << testing::PrintToString(content);
    }
  }
}

}  // namespace
}  // namespace mapexport
