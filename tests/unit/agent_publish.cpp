// What is published, in a folder that fills up, goes away, is tampered with or shared.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/resource.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <set>
#include <vector>

#include "agent/base/Ledger.h"
#include "agent/publish/MetricsFile.h"
#include "agent/publish/Publisher.h"
#include "agent/slots/Loop.h"

namespace {

namespace fs = std::filesystem;
using Agent::Ledger;
using Agent::Publisher;
using Agent::Publishing;
using Agent::Verdict;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::ThrowsMessage;

std::string textOf(fs::path const& file) {
  std::ifstream in(file);
  return {std::istreambuf_iterator<char>(in), {}};
}

void write(fs::path const& file, std::string const& text) { std::ofstream(file) << text; }

class Published : public testing::Test {
 protected:
  Published() {
    std::string pattern = fs::temp_directory_path() / "psu-publish-XXXXXX";
    base_ = ::mkdtemp(pattern.data());
    folder_ = base_ / "fdl";
    fs::create_directory(folder_);
    testing::internal::CaptureStderr();
  }
  ~Published() override {
    testing::internal::GetCapturedStderr();
    fs::remove_all(base_);
  }

  Publishing publishing() const { return {.folder = folder_}; }
  Publisher& start(Publishing const& publishing) {
    Publisher& publisher = publisher_.emplace(publishing, ledger_);
    publisher.slotsAre({"A", "B"});
    return publisher;
  }
  /// The slot's supply has come to `verdict`, and has `fdl`.
  void verdict(std::string const& slot, Verdict verdict, std::string_view fdl = "") {
    Agent::Supply supply;
    supply.verdict = verdict;
    supply.fdl = Kex::String8(fdl);
    publisher_->supplyIs(slot, supply);
  }
  void identified(std::string const& slot, std::string_view fdl) {
    verdict(slot, Verdict::identified, fdl);
  }
  void pass(double seconds) {
    loop_.run(loop_.now() + seconds, [] { return false; });
  }
  /// What was told since the last time.
  static std::string told() {
    std::string text = testing::internal::GetCapturedStderr();
    testing::internal::CaptureStderr();
    return text;
  }
  /// All files that are no secret, with what they hold.
  std::vector<std::string> files() const {
    std::set<std::string> found;
    for (fs::directory_entry const& entry : fs::directory_iterator(folder_)) {
      if (entry.path().filename() != ".psu-agent.slots") {
        found.insert(entry.path().filename().string() + ": " + textOf(entry.path()));
      }
    }
    return {found.begin(), found.end()};
  }
  fs::path file(char const* slot) const { return folder_ / (slot + std::string(".fdl")); }

  fs::path base_;
  fs::path folder_;
  Agent::Loop loop_{Agent::ClockKind::virtualClock};
  Ledger ledger_;
  std::optional<Publisher> publisher_;
};

TEST_F(Published, FollowsTheVerdicts) {
  struct {
    Verdict verdict;
    double wait;
    bool stays;
  } const rows[] = {
      {Verdict::unreachable, 59.5, true},
      {Verdict::unreachable, 61, false},
      {Verdict::absent, 0, false},
      {Verdict::unsupportedManufacturer, 0, false},
      {Verdict::unreadable, 0, false},
      {Verdict::invalidHeader, 0, false},
      {Verdict::invalidChecksum, 0, false},
      {Verdict::unrecognised, 0, false},
      {Verdict::unsupportedVersion, 0, false},
  };
  start(publishing());
  for (auto const& row : rows) {
    identified("A", "one");
    EXPECT_THAT(files(), ElementsAre("A.fdl: one"));
    verdict("A", row.verdict);
    pass(row.wait / 2);
    // Trouble that goes on is not new trouble.
    verdict("A", row.verdict);
    pass(row.wait / 2);
    EXPECT_EQ(fs::exists(file("A")), row.stays) << static_cast<int>(row.verdict) << row.wait;
  }
  identified("A", "one");
  verdict("A", Verdict::unreachable);
  identified("A", "two");
  pass(100);
  EXPECT_THAT(files(), ElementsAre("A.fdl: two"));
  publisher_.reset();
  EXPECT_TRUE(fs::is_empty(folder_));
  EXPECT_EQ(told(), "");
}

TEST_F(Published, OthersHandsArePutRight) {
  struct {
    char const* what;
    std::function<void()> act;
  } const rows[] = {
      {"removed", [&] { fs::remove(file("A")); }},
      {"changed, as long as before", [&] { write(file("A"), "eno"); }},
      {"not to be read", [&] { fs::permissions(file("A"), fs::perms::none); }},
      {"a link in its place",
       [&] {
         fs::rename(file("A"), base_ / "moved");
         fs::create_symlink(base_ / "moved", file("A"));
       }},
      {"a link in the place of what is being written",
       [&] {
         fs::create_symlink(base_ / "precious", folder_ / ".A.fdl.new");
         fs::remove(file("A"));
       }},
      {"a link that leads nowhere", [&] { fs::create_symlink(base_ / "nowhere", file("B")); }},
      {"a link to another's file", [&] { fs::create_symlink(base_ / "precious", file("B")); }},
      {"another name of another's file",
       [&] { fs::create_hard_link(base_ / "precious", file("B")); }},
      {"a file of an empty slot", [&] { write(file("B"), "forged"); }},
      {"a folder of an empty slot", [&] { fs::create_directory(file("B")); }},
      {"a wiped folder", [&] { fs::remove_all(folder_), fs::create_directory(folder_); }},
      {"no folder", [&] { fs::remove_all(folder_); }},
      {"another folder",
       [&] { fs::rename(folder_, base_ / "away"), fs::create_directory(folder_); }},
  };
  write(base_ / "precious", "precious");
  start(publishing());
  identified("A", "one");
  for (auto const& row : rows) {
    row.act();
    pass(1.5);
    EXPECT_THAT(files(), ElementsAre("A.fdl: one")) << row.what;
    EXPECT_TRUE(fs::is_regular_file(fs::symlink_status(file("A")))) << row.what;
    EXPECT_EQ(textOf(base_ / "precious"), "precious") << row.what;
    EXPECT_FALSE(fs::exists(base_ / "nowhere")) << row.what;
  }
  EXPECT_EQ(told(), "");
}

TEST_F(Published, WhatFailsIsToldOnceAndTriedAgain) {
  Publisher& publisher = start(publishing());
  identified("A", "one");
  // A folder that holds something can be neither replaced nor removed.
  fs::remove(file("A"));
  fs::create_directory(file("A"));
  write(file("A") / "something", "");
  pass(5);
  std::string const path = "psu-agent: " + file("A").string();
  EXPECT_EQ(told(), path + ": cannot be written: Is a directory; " + file("A").string() +
                        ": cannot be removed: Directory not empty\n");
  verdict("A", Verdict::absent);
  pass(5);
  EXPECT_EQ(told(), path + ": cannot be removed: Directory not empty\n");
  // A slot that is none any more does not let it rest either.
  publisher.slotsAre({"B"});
  pass(5);
  EXPECT_EQ(told(), path + ": cannot be removed: Directory not empty\n");
  fs::remove(file("A") / "something");
  pass(1.5);
  EXPECT_THAT(files(), IsEmpty());
  EXPECT_EQ(told(), path + ": as it should be again\n");
  EXPECT_EQ(ledger_.status(), Agent::Status::failed);

  // A link where the folder was is no folder of ours.
  fs::rename(folder_, base_ / "away");
  fs::create_directory_symlink(base_ / "away", folder_);
  identified("B", "two");
  pass(5);
  EXPECT_THAT(told(), testing::EndsWith("cannot publish there: Not a directory\n"));
  fs::remove(folder_);
  pass(1.5);
  EXPECT_THAT(files(), ElementsAre("B.fdl: two"));

  // The one that is in the way is named.
  told();
  fs::create_directories(folder_ / ".B.fdl.new" / "x");
  fs::remove(file("B"));
  pass(5);
  EXPECT_EQ(told(), "psu-agent: " + (folder_ / ".B.fdl.new").string() +
                        ": is in the way and cannot be removed: Directory not empty\n");
}

TEST_F(Published, NoRoomTakesTheOldFileAway) {
  // As root a file system that is really full, else a limit that counts for every file.
  bool const isMounted = ::mount("tmpfs", folder_.c_str(), "tmpfs", 0, "size=16k,mode=0777") == 0;
  rlimit before{};
  ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
  auto const noRoomIs = [&](bool isFull) {
    if (!isMounted) {
      rlimit const limit{.rlim_cur = isFull ? 0 : before.rlim_cur, .rlim_max = before.rlim_max};
      EXPECT_EQ(::setrlimit(RLIMIT_FSIZE, &limit), 0);
    } else if (isFull) {
      write(folder_ / "filler", std::string(64 << 10, ' '));
    } else {
      fs::remove(folder_ / "filler");
    }
  };
  std::signal(SIGXFSZ, SIG_IGN);
  {
    start(publishing());
    identified("A", "one");
    noRoomIs(true);
    // The old file's room is not enough.
    std::string const large(6000, '2');
    identified("A", large);
    bool const isThere = fs::exists(file("A"));
    pass(3);
    std::string const text = told();
    noRoomIs(false);
    EXPECT_FALSE(isThere) << "it is another supply's";
    EXPECT_EQ(text, "psu-agent: " + file("A").string() + ": cannot be written: " +
                        (isMounted ? "No space left on device" : "File too large") + "\n");
    pass(1.5);
    EXPECT_THAT(files(), ElementsAre("A.fdl: " + large));
  }
  publisher_.reset();
  EXPECT_TRUE(fs::is_empty(folder_));
  if (isMounted) {
    EXPECT_EQ(::umount(folder_.c_str()), 0);
  }
}

TEST_F(Published, OneAgentAFolder) {
  start(publishing());
  std::string const path = fs::canonical(folder_);
  EXPECT_THAT([&] { Publisher(publishing(), ledger_); },
              ThrowsMessage<Agent::Failure>(path + ": cannot publish there: another program does"));
  publisher_.reset();
  start(publishing());
  fs::rename(folder_, base_ / "away");
  EXPECT_THAT(
      [&] { Publisher(publishing(), ledger_); },
      ThrowsMessage<Agent::Failure>(HasSubstr("cannot publish there: No such file or directory")));
  // Somebody else was quicker in the folder that was made anew.
  fs::create_directory(folder_);
  {
    Publisher const other(publishing(), ledger_);
    pass(1.5);
    EXPECT_THAT(told(), HasSubstr("another program does"));
  }
  identified("A", "one");
  pass(1.5);
  EXPECT_THAT(files(), ElementsAre("A.fdl: one"));
}

TEST_F(Published, WhatAnEarlierRunLeft) {
  auto const leave = [&] {
    write(file("A"), "old");
    write(file("B"), "old");
    write(file("C"), "old");
    write(file("Foreign"), "foreign");
    write(folder_ / ".A.fdl.new", "half");
    write(folder_ / ".psu-agent.slots", "A\nB\nC\n../precious\n");
    fs::permissions(folder_, fs::perms::owner_all);
  };
  write(base_ / "precious.fdl", "precious");
  // Not kept, nothing of it is known to be true; files of others stay.
  leave();
  start(publishing());
  EXPECT_THAT(files(), ElementsAre("Foreign.fdl: foreign"));
  publisher_.reset();

  Publishing kept = publishing();
  kept.isKept = true;
  leave();
  start(kept);
  EXPECT_THAT(files(), testing::Contains("A.fdl: old"));
  EXPECT_THAT(files(), testing::Not(testing::Contains("C.fdl: old"))) << "no slot any more";
  identified("A", "new");
  pass(14);
  EXPECT_THAT(files(), ElementsAre("A.fdl: new", "B.fdl: old", "Foreign.fdl: foreign"));
  pass(2);
  EXPECT_THAT(files(), ElementsAre("A.fdl: new", "Foreign.fdl: foreign"));
  publisher_.reset();
  EXPECT_THAT(files(), ElementsAre("A.fdl: new", "Foreign.fdl: foreign"));

  // Trouble on the bus confirms nothing: 15 s are the most, a hold may be shorter.
  for (double const hold : {60.0, 5.0}) {
    leave();
    kept.hold = hold;
    start(kept);
    verdict("A", Verdict::unreachable);
    verdict("B", Verdict::absent);
    EXPECT_FALSE(fs::exists(file("B")));
    pass(std::min(hold, 15.0) - 1);
    EXPECT_TRUE(fs::exists(file("A")));
    pass(2);
    EXPECT_FALSE(fs::exists(file("A")));
    publisher_.reset();
  }
  EXPECT_EQ(textOf(base_ / "precious.fdl"), "precious");
}

TEST_F(Published, SlotsComeAndGo) {
  Publisher& publisher = start(publishing());
  identified("A", "one");
  identified("B", "two");
  publisher.slotsAre({"B", "C"});
  EXPECT_THAT(files(), ElementsAre("B.fdl: two"));
  publisher.slotsAre({"A", "B"});
  EXPECT_THAT(files(), ElementsAre("B.fdl: two"));
  identified("A", "three");
  EXPECT_THAT(files(), ElementsAre("A.fdl: three", "B.fdl: two"));
}

TEST_F(Published, FiguresAtChangesAndFromTimeToTime) {
  Agent::Meter meter;
  meter.slotsAre({"A"});
  fs::path const figures = base_ / "figures" / "psu.prom";
  fs::create_directory(figures.parent_path());
  {
    Agent::MetricsFile const kept(figures, meter, nullptr, ledger_);
    for (bool const isChanged : {false, true}) {
      if (isChanged) {
        pass(7);
        meter.supplyIs("A", {});
      }
      ASSERT_TRUE(fs::remove(figures));
      pass(14.9);
      EXPECT_FALSE(fs::exists(figures));
      pass(0.2);
      EXPECT_TRUE(fs::exists(figures));
    }
    fs::remove_all(figures.parent_path());
    pass(15.1);
    EXPECT_TRUE(fs::exists(figures));
  }
  EXPECT_FALSE(fs::exists(figures));
}

}  // namespace
