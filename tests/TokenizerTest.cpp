// The tokenizer against its edge cases and, on random texts, against its definition.
#include <algorithm>
#include <istream>
#include <iterator>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "exporter/materials/TextStreambuf.h"
#include "exporter/materials/Tokenizer.h"
#include "reference/LiteralTokenizer.h"

namespace mapexport {
namespace {

using namespace std::string_literals;
using Tokens = std::vector<std::string>;

Tokens TokensOf(const std::string& content) {
  std::stringbuf file(content);
  TextStreambuf text(file);
  std::istream input(&text);
  Tokenizer tokenizer(input);
  Tokens tokens;
  while (tokenizer.ReadToken()) tokens.emplace_back(tokenizer.Token());
  EXPECT_STREQ(tokenizer.Token(), "");
  EXPECT_FALSE(tokenizer.ReadToken());
  EXPECT_STREQ(tokenizer.Token(), "");
  return tokens;
}

TEST(Tokenizer, YieldsTheWordsOfAText) {
  const std::string k1023(1023, 'x');
  const struct {
    std::string text;
    Tokens tokens;
  } cases[] = {
      {"", {}},
      {" \t\n\r\n// \"a\" /*\n/* b\n c */ \t", {}},
      {"one two\nthree\n", {"one", "two", "three"}},
      {"one two\nthree", {"one", "two", "three"}},
      {"a /* comment\ncomment */ b", {"a", "b"}},
      {"/*/ x */a /**/b /***/c", {"a", "b", "c"}},
      {"/* *\n/ a */b", {"b"}},
      {"/* never closed\na", {}},
      {"// last line", {}},
      {"\"two words\"next \"\" \"// /* \"", {"two words", "next", "", "// /* "}},
      {"\"open\nnext \"\nlast", {"open", "next", "", "last"}},
      {"/x /\n/ /", {"/x", "/", "/", "/"}},
      {"a//b c/*d abc\"def\" x\"y z\"", {"a//b", "c/*d", "abc\"def\"", "x\"y", "z\""}},
      {"a\rb\r\nc\r\r\nd\r", {"a\rb", "c\r", "d\r"}},
      {"a\v\xFF\xFE \x80\x1A"s, {"a\v\xFF\xFE", "\x80\x1A"}},
      {"a\0b c\nd\0"s, {"a", "d"}},
      {k1023 + "\nb", {k1023, "b"}},
      {k1023 + "\r\nb", {k1023, "b"}},
      {k1023 + "yz", {k1023, "yz"}},
      {k1023.substr(1) + "/" + "/a", {k1023.substr(1) + "/", "/a"}},
      {k1023.substr(2) + " /" + "/a", {k1023.substr(2), "/", "/a"}},
      {"\"" + k1023 + "\" b", {k1023.substr(1), "x\"", "b"}},
  };
  for (const auto& c : cases) EXPECT_EQ(TokensOf(c.text), c.tokens) << c.text;
}

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
  std::mt19937 random(20260);
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
