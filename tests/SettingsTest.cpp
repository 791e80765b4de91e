// Tests of the settings store: what its file may hold, what survives, what is never overwritten.
#include <cerrno>
#include <chrono>
#include <thread>

#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include "settings/LockedSettingsFile.h"
#include "settings/ReadSettingsFile.h"
#include "settings/SettingsError.h"
#include "settings/SettingsStore.h"
#include "support/Testing.h"

namespace {

bool fileSystemHasLocks = true;

}  // namespace

// Stands in for the C library's, so that tests can have a file system without locks.
extern "C" int flock(int descriptor, int operation) noexcept {
  if (fileSystemHasLocks) return static_cast<int>(::syscall(SYS_flock, descriptor, operation));
  errno = ENOLCK;
  return -1;
}

namespace mapexport {
namespace {

using std::chrono::milliseconds;

constexpr const char* kKey = "Software\\Maker\\Tool";

HKEY OpenKey(SettingsStore& store, RegistryAccess access, const char* path = kKey) {
  HKEY key = nullptr;
  EXPECT_EQ(store.CreateKey(RegistryRoot::kLocalMachine, path, "class", access, key), kRegSuccess);
  return key;
}

void SetText(SettingsStore& store, const char* name, const std::string& text,
             const char* path = kKey) {
  const auto size = static_cast<std::uint32_t>(text.size() + 1);
  EXPECT_EQ(store.SetValue(OpenKey(store, RegistryAccess::kSet, path), name, RegistryType::kText,
                           text.c_str(), size),
            kRegSuccess);
}

void SetNumber(SettingsStore& store, const char* name, std::uint32_t number) {
  EXPECT_EQ(
      store.SetValue(OpenKey(store, RegistryAccess::kSet), name, RegistryType::kNumber, &number, 4),
      kRegSuccess);
}

/// The value as text; a number is "#" and its digits, a missing value "-".
std::string Value(SettingsStore& store, const std::string& name, const char* path = kKey) {
  const HKEY key = OpenKey(store, RegistryAccess::kQuery, path);
  std::uint32_t number = 0;
  std::uint32_t size = sizeof number;
  if (store.QueryValue(key, name.c_str(), RegistryType::kNumber, &number, size) == kRegSuccess) {
    return "#" + std::to_string(number);
  }
  std::string buffer(size = 300, '?');
  if (store.QueryValue(key, name.c_str(), RegistryType::kText, buffer.data(), size) !=
      kRegSuccess) {
    return "-";
  }
  EXPECT_EQ(buffer[size - 1], '\0');
  return buffer.substr(0, size - 1);
}

std::string WithMarkAndCrLf(const std::string& text) {
  std::string result = "\xEF\xBB\xBF";
  for (const char c : text) result += c == '\n' ? std::string("\r\n") : std::string(1, c);
  return result;
}

class SettingsTest : public testing::Test {
 protected:
  void Write(const std::string& bytes) const { mapexport::Write(file_, bytes); }
  std::string Read() const { return Content(file_); }

  const TempFolder temporary_;
  const fs::path folder_ = temporary_.Path();
  const fs::path file_ = folder_ / "settings.reg";
};

TEST_F(SettingsTest, EverythingElseInTheFileSurvives) {
  const std::string before = R"(REGEDIT4

; kept
[HKEY_CURRENT_USER\Other]
@="x"
"bin"=hex:01,\
  02 ; odd
[-HKEY_LOCAL_MACHINE\Gone]

[hkey_local_machine\SOFTWARE\Maker\tool]
"A \"q\""  = "old" ; why
"N"=dword:2a
"E"=hex(2):41,\
  00
; behind

[HKEY_USERS\a]b]
"x"=-)";
  std::string after = before;
  const auto exchange = [&after](const std::string& from, const std::string& to) {
    after.replace(after.find(from), from.size(), to);
  };
  exchange("\"old\"", "\"C:\\\\new\"");
  exchange("hex(2):41,\\\n  00\n", "\"text\"\n\"Added\"=dword:ffffffff\n");
  after += "\n\n[HKEY_LOCAL_MACHINE\\Gone]\n@=\"back\"\n";
  for (const bool crLf : {false, true}) {
    Write(crLf ? WithMarkAndCrLf(before) : before);
    SettingsStore store = SettingsStore::Open(file_);
    EXPECT_EQ(store.Warning(), "");
    SetText(store, "a \"Q\"", "C:\\new");
    SetNumber(store, "n", 42);  // as it is: its spelling stays
    SetText(store, "E", "text");
    SetNumber(store, "Added", 1);
    SetNumber(store, "added", 0xFFFFFFFF);
    SetText(store, nullptr, "back", "Gone");
    EXPECT_EQ(store.Save(), "");
    EXPECT_EQ(Read(), crLf ? WithMarkAndCrLf(after) : after);
  }
}

TEST_F(SettingsTest, ValuesComeBack) {
  const std::vector<std::string> texts = {
      "",           "C:\\a\\",        "say \"hi\"\\n", "a;b=]\t\xC3\xA9", "two\nlines\r\n",
      "latin \xE9", "sur\xED\xA0\x80"};
  const fs::path path = folder_ / "new" / "folders" / "s.reg";
  SettingsStore store = SettingsStore::Open(path);
  for (const std::string& text : texts) SetText(store, (text.substr(0, 3) + "\"\\").c_str(), text);
  ASSERT_EQ(store.Save(), "");
  SettingsStore again = SettingsStore::Open(path);
  EXPECT_EQ(again.Warning(), "");
  for (const std::string& text : texts) EXPECT_EQ(Value(again, text.substr(0, 3) + "\"\\"), text);
}

TEST_F(SettingsTest, HandWrittenFormsAreRead) {
  Write(R"(REGEDIT4 ; and a remark
[HKEY_LOCAL_MACHINE\Software\Maker\Tool] ; [x]
	"a" = "1" ; "2"
"TWICE"="1"
"twice"=dword:A
"gone"="1"
"gone"=-
"h"=hex(1):41,\
  d,\
	42,0,43 ; c
[HKEY_LOCAL_MACHINE\Off\Sub]
"a"="1"
[HKEY_LOCAL_MACHINE\Offside]
"a"="1"
[-HKEY_LOCAL_MACHINE\OFF]
"a"="1"
)");
  SettingsStore store = SettingsStore::Open(file_);
  EXPECT_EQ(store.Warning(), "");
  EXPECT_EQ(Value(store, "a"), "1");
  EXPECT_EQ(Value(store, "Twice"), "#10");
  EXPECT_EQ(Value(store, "gone"), "-");
  EXPECT_EQ(Value(store, "h"), "A\rB");
  EXPECT_EQ(Value(store, "a", "Off\\Sub"), "-");
  EXPECT_EQ(Value(store, "a", "Offside"), "1");
}

TEST_F(SettingsTest, WhatIsNotOfTheFormIsNeverOverwritten) {
  const std::string head = "REGEDIT4\n[HKEY_LOCAL_MACHINE\\Software]\n";
  const std::vector<std::pair<std::string, const char*>> cases = {
      {"\xEF\xBB\xBF", "line 1: the first line"},
      {"REGEDIT42\n", "line 1: the first line"},
      {"REGEDIT4\n\"a\"=\"b\"\n", "line 2: a value precedes"},
      {head + "[HKEY\n]\n", "line 3: the key's line"},
      {head + "[]\n", "line 3: the key has no name"},
      {head + "a=\"b\"\n", "line 3: neither"},
      {head + "\"a=b\n", "line 3: the closing quote"},
      {head + "\"a\"\"b\"\n", "line 3: the value's name"},
      {head + "\"a\"=\"C:\\dir\"\n", "line 3: in quotes"},
      {head + "\"a\"=\"b\" c\n", "line 3: something follows"},
      {head + "\"a\"=dword:123456789\n", "line 3: a number needs"},
      {head + "\"a\"=hex:00,123\n", "line 3: a byte needs"},
      {head + "\"a\"=hex:00,\\\n; 01\n", "line 4: a byte needs"},
      {head + "\"a\"=hex:00,\\", "line 3: the line ends in"},
      {head + "\"a\"=\n", "line 3: the value is none"},
      {head + "; caf\xE9\n", "line 3: the line is not UTF-8"},
      {head + "\n; " + std::string(1, '\0') + "\xFF", "line 4: the line holds a NUL"},
  };
  for (const auto& [bytes, complaint] : cases) {
    Write(bytes);
    SettingsStore store = SettingsStore::Open(file_);
    EXPECT_THAT(store.Warning(), testing::StartsWith(file_.string() + ": "));
    EXPECT_THAT(store.Warning(), HasSubstr(complaint));
    HKEY key = nullptr;
    EXPECT_EQ(store.CreateKey(RegistryRoot::kLocalMachine, kKey, "", RegistryAccess::kSet, key),
              kRegAccessDenied);
    EXPECT_EQ(key, nullptr);
    EXPECT_EQ(store.Save(), "");
    EXPECT_EQ(Read(), bytes);
  }
  ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0600), 0);
  std::ofstream(folder_ / "long") << "REGEDIT4\n";
  fs::resize_file(folder_ / "long", kMaxSettingsBytes + 1);
  const std::vector<std::pair<fs::path, const char*>> paths = {
      {folder_, "not a regular file"},
      {folder_ / "pipe", "not a regular file"},
      {folder_ / "long", "longer than 16777216 bytes"},
      {file_ / "below", "can't be opened: Not a directory"},
      {"", "the path of the settings file is empty"}};
  for (const auto& [path, complaint] : paths) {
    EXPECT_THAT(SettingsStore::Open(path).Warning(), HasSubstr(complaint));
  }

  Write(head);
  SettingsStore store = SettingsStore::Open(file_);
  SetText(store, "a", "b");
  Write(head + "broken\n");
  EXPECT_THAT(store.Save(), HasSubstr("settings.reg: line 3: neither"));
  EXPECT_EQ(Read(), head + "broken\n");
}

TEST_F(SettingsTest, AccessRightsSizesAndTypesAreEnforced) {
  SettingsStore store = SettingsStore::InMemory();
  SetText(store, "t", "four");
  SetNumber(store, "n", 7);
  const HKEY query = OpenKey(store, RegistryAccess::kQuery);
  const HKEY set = OpenKey(store, RegistryAccess::kSet);
  const auto text = RegistryType::kText;
  const auto number = RegistryType::kNumber;
  char buffer[8] = "unused";
  const auto ask = [&](HKEY key, const char* name, RegistryType type, std::uint32_t& size) {
    return store.QueryValue(key, name, type, buffer, size);
  };
  std::uint32_t size = 4;
  EXPECT_EQ(ask(set, "t", text, size), kRegAccessDenied);
  EXPECT_EQ(ask(query, "t", text, size), kRegMoreData);
  EXPECT_EQ(size, 5u);
  EXPECT_STREQ(buffer, "unused");
  EXPECT_EQ(ask(query, "T", text, size), kRegSuccess);
  EXPECT_STREQ(buffer, "four");
  size = 3;
  EXPECT_EQ(ask(query, "n", number, size), kRegMoreData);
  EXPECT_EQ(ask(query, "n", text, size), kRegFileNotFound);
  EXPECT_EQ(ask(query, "t", number, size), kRegFileNotFound);

  EXPECT_EQ(store.SetValue(query, "t", text, "x", 2), kRegAccessDenied);
  EXPECT_EQ(store.SetValue(set, "n", number, buffer, 3), kRegInvalidParameter);
  EXPECT_EQ(store.SetValue(set, "a\nb", text, "x", 2), kRegInvalidParameter);
  EXPECT_EQ(store.SetValue(set, "t", text, "cut here", 3), kRegSuccess);
  EXPECT_EQ(Value(store, "t"), "cut");
  for (const char* path : {"a]b", "a\nb", "\\a", "a\\", "a\\\\b", "\xE9"}) {
    HKEY key = nullptr;
    EXPECT_EQ(store.CreateKey(RegistryRoot::kLocalMachine, path, "", RegistryAccess::kSet, key),
              kRegInvalidParameter);
  }
  store.CloseKey(query);
  for (const HKEY closed : {query, HKEY{nullptr}, reinterpret_cast<HKEY>(&store)}) {
    EXPECT_EQ(ask(closed, "t", text, size), kRegAccessDenied);
    store.CloseKey(closed);
  }
}

TEST_F(SettingsTest, AFileComesIntoBeingWithTheFirstValueAlone) {
  SettingsStore store = SettingsStore::Open(file_);
  OpenKey(store, RegistryAccess::kSet);
  EXPECT_EQ(store.Save(), "");
  EXPECT_FALSE(fs::exists(file_));
  Write("");  // a file without bytes holds nothing yet
  store = SettingsStore::Open(file_);
  SetNumber(store, "n", 1);
  EXPECT_EQ(store.Save(), "");
  const std::string saved =
      "REGEDIT4\n\n[HKEY_LOCAL_MACHINE\\Software\\Maker\\Tool]\n\"n\"=dword:00000001\n";
  EXPECT_EQ(Read(), saved);
  Write("REGEDIT4\n");
  EXPECT_EQ(store.Save(), "") << "what was saved is not saved once more";
  EXPECT_EQ(Read(), "REGEDIT4\n");
  Write(saved);
  store = SettingsStore::Open(file_);
  fs::last_write_time(file_, fs::file_time_type());
  SetNumber(store, "N", 1);
  EXPECT_EQ(store.Save(), "");
  EXPECT_EQ(fs::last_write_time(file_), fs::file_time_type()) << "it holds that already";
}

TEST_F(SettingsTest, StoresThatSaveAtTheSameTimeLoseNothing) {
  constexpr int kRounds = 20;
  const auto saveMany = [this](const std::string& prefix) {
    for (int i = 0; i < kRounds; ++i) {
      SettingsStore store = SettingsStore::Open(file_);
      SetText(store, (prefix + std::to_string(i)).c_str(), prefix);
      EXPECT_EQ(store.Save(), "");
    }
  };
  std::thread other(saveMany, "a");
  saveMany("b");
  other.join();
  SettingsStore store = SettingsStore::Open(file_);
  for (int i = 0; i < kRounds; ++i) {
    EXPECT_EQ(Value(store, "a" + std::to_string(i)), "a");
    EXPECT_EQ(Value(store, "b" + std::to_string(i)), "b");
  }
  EXPECT_EQ(Names(folder_).size(), 1U);
}

TEST_F(SettingsTest, LinksAreFollowedAndTheModeIsKept) {
  fs::create_directory(folder_ / "real");
  fs::create_symlink("real/target.reg", file_);
  for (const char* name : {"first", "second"}) {  // the link leads nowhere at first
    SettingsStore store = SettingsStore::Open(file_);
    SetText(store, name, name);
    EXPECT_EQ(store.Save(), "");
    EXPECT_TRUE(fs::is_symlink(file_));
    fs::permissions(folder_ / "real" / "target.reg", fs::perms(0640));
  }
  SettingsStore store = SettingsStore::Open(file_);
  SetText(store, "third", "third");
  EXPECT_EQ(store.Save(), "");
  EXPECT_EQ(Value(store, "first") + Value(store, "second"), "firstsecond");
  EXPECT_EQ(fs::status(file_).permissions(), fs::perms(0640));
}

TEST_F(SettingsTest, ALockIsWaitedForButNotForEver) {
  {
    const LockedSettingsFile held(file_, milliseconds(0));
    EXPECT_THROW(LockedSettingsFile(file_, milliseconds(50)), SettingsError);
  }
  EXPECT_TRUE(fs::is_empty(folder_)) << "made for the lock, never written";

  fileSystemHasLocks = false;
  EXPECT_THROW(LockedSettingsFile(file_, milliseconds(50)), SettingsError);
  fileSystemHasLocks = true;
  EXPECT_TRUE(fs::is_empty(folder_)) << "made, but could not be locked";
}

TEST_F(SettingsTest, DefaultPathFollowsTheEnvironment) {
  const auto pathWith = [](const char* configHome, const char* home) {
    ::setenv("XDG_CONFIG_HOME", configHome, 1);
    ::setenv("HOME", home, 1);
    return SettingsStore::DefaultPath();
  };
  EXPECT_EQ(pathWith("/c", "/h"), "/c/mapexport/settings.reg");
  EXPECT_EQ(pathWith("c", "/h"), "/h/.config/mapexport/settings.reg");
  EXPECT_EQ(pathWith("", ""), "");
}

}  // namespace
}  // namespace mapexport
