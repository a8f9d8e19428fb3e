// Every call by which a subcommand writes fails once, for want of room or otherwise, or a signal comes before or behind
// it: the status tells, one line says what could not be written, and what stands under an output's name is whole, the
// file that was there before or the new one. Nothing else is left behind.
#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <map>
#include <string>
#include <tuple>

#include "run.h"

namespace {

using Files = std::map<std::string, Bytes>;

struct Command {
  const char* name;
  std::string line;
  bool to_stdout = false;
};

// Rows of frames are 256 samples wide; the light falls off to the sides, so that the lens can be fitted.
const std::vector<Command>& commands() {
  static const std::vector<Command> all{
      {"picture", "convert flat.raw -W 256 -H 96 -o x.png"},
      {"ppm", "convert flat.raw -W 256 -H 96 -o x.ppm"},
      {"frame", "convert flat.raw -W 256 -H 96 -o x.i420"},
      {"stream", "convert three.raw -W 64 -H 32 --all -j 1 -o x.y4m"},
      {"stream_of_three_jobs", "convert three.raw -W 64 -H 32 --all -j 3 -o x.y4m"},
      {"numbered", "convert three.raw -W 64 -H 32 --all -j 1 -o x.ppm"},
      {"numbered_of_three_jobs", "convert three.raw -W 64 -H 32 --all -j 3 -o x.ppm"},
      {"finished", "convert frame.yuyv -W 64 -H 32 --input yuyv -o x.i420"},
      {"on_standard_output", "convert flat.raw -W 256 -H 96 --format ppm -o -", true},
      {"sheet", "compare one.raw -W 64 -H 32 -o x.png"},
      {"table_and_differences", "compare one.raw -W 64 -H 32 --truth small.png --difference d.png -o x.png",
       true},
      {"pictures", "compare small.png --truth small.png --difference x.png", true},
      {"statistics", "stats flat.raw -W 256 -H 96 -o x.txt"},
      {"statistics_as_json", "stats flat.raw -W 256 -H 96 --json", true},
      {"fields", "deinterlace field field -W 64 -H 32 -o x.png"},
      {"interlaced", "deinterlace frame.yuyv frame.yuyv --frames -W 64 -H 32 -o x.y4m"},
      {"simulated", "simulate small.png -o x.raw"},
      {"settings", "settings --gamma 3 -o x.json"},
      {"settings_shown", "settings --full --as c", true},
      {"gains", "gains one.raw -W 64 -H 32 --region 0,0,64,32 -o x.txt"},
      {"lens", "lens flat.raw -W 256 -H 96 -o x.txt"},
      {"manual", "manual ."},
      {"help", "convert --help", true},
      {"version", "--version", true},
  };
  return all;
}

class Faults : public Tool, public testing::WithParamInterface<Command> {
 protected:
  Faults() {
    Bytes flat(256 * 96), one(64 * 32), three;
    for (size_t i = 0; i < flat.size(); ++i) {
      const auto x = static_cast<int>(i % 256) - 128, y = static_cast<int>(i / 256) - 48;
      flat[i] = static_cast<uint8_t>(200 - (x * x + y * y) / 400);
    }
    for (size_t i = 0; i < one.size(); ++i) one[i] = static_cast<uint8_t>(60 + i * 7 % 90);
    for (int f = 0; f < 3; ++f) three.insert(three.end(), one.begin(), one.end());
    write("flat.raw", flat);
    write("one.raw", one);
    write("three.raw", three);
    write("frame.yuyv", Bytes(64 * 32 * 2, 90));
    write("field", Bytes(64 * 32, 90));
    ok({"convert", "one.raw", "-W", "64", "-H", "32", "-o", "small.png"});
    before_ = held();
  }

  Files held() const {
    Files all;
    for (const std::string& name : files()) all[name] = read(name);
    return all;
  }
  void put(const Files& wanted) const {
    for (const std::string& name : files())
      if (!wanted.count(name)) remove(path(name).c_str());
    for (const auto& [name, bytes] : wanted) write(name, bytes);
  }
  Result with(const std::string& environment) const {
    return shell("LD_PRELOAD='" SHIM "' FAULT_COUNT='" + count_ + "' " + environment + " \"$PPL\" " +
                 GetParam().line);
  }
  int counted() const {
    const Bytes text = read_whole(count_);
    return std::atoi(std::string(text.begin(), text.end()).c_str());
  }
  // What it makes when nothing fails, and by how many calls.
  void learn() {
    const Result good = with("");
    ASSERT_EQ(good.status, 0) << good.err;
    out_ = good.out;
    made_ = held();
    calls_ = counted();
    ASSERT_EQ(GetParam().to_stdout && out_.empty(), false);
    ASSERT_EQ(!GetParam().to_stdout && made_.size() == before_.size(), false);
  }
  // Every name holds what it held, or what it was to hold.
  void expect_whole(const Files& old, const std::string& what) const {
    for (const auto& [name, bytes] : held()) {
      const auto was = old.find(name), is = made_.find(name);
      EXPECT_TRUE((was != old.end() && bytes == was->second) || (is != made_.end() && bytes == is->second))
          << what << ": " << name << " holds " << bytes.size() << " bytes";
    }
    for (const auto& [name, bytes] : old)
      EXPECT_TRUE(held().count(name)) << what << ": " << name << " is gone";
  }
  // Where files of these names are there already.
  Files overwriting() const {
    Files old = before_;
    for (const auto& [name, bytes] : made_) old.emplace(name, Bytes{1, 2, 3});
    return old;
  }

  Files before_, made_;
  std::string out_;
  int calls_ = 0;
  const std::string count_ = path("") + "../" + "fault_count." + std::to_string(getpid());

 public:
  ~Faults() override { remove(count_.c_str()); }
};

TEST_P(Faults, AnErrorIsToldAndLeavesNothingHalf) {
  learn();
  for (const auto& [old, why, text] : {std::tuple{before_, "ENOSPC", "No space left"},
                                       std::tuple{overwriting(), "EIO", "Input/output error"}})
    for (int n = 1; n <= calls_; ++n) {
      const std::string way = std::string("FAULT=") + why + " FAULT_AT=" + std::to_string(n);
      put(old);
      const Result result = with(way);
      EXPECT_EQ(result.status, 1) << way;
      EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << way << ": " << result.err;
      EXPECT_NE(result.err.find("can't write "), std::string::npos) << way << ": " << result.err;
      EXPECT_NE(result.err.find(text), std::string::npos) << way << ": " << result.err;
      expect_whole(old, way);
    }
}

TEST_P(Faults, ASignalLeavesNothingHalf) {
  learn();
  for (const auto& [old, number, where] :
       {std::tuple{before_, SIGTERM, ""}, std::tuple{overwriting(), SIGINT, " FAULT_BEHIND=1"}})
    for (int n = 1; n <= calls_; ++n) {
      const std::string way = "FAULT=" + std::to_string(number) + " FAULT_AT=" + std::to_string(n) + where;
      put(old);
      EXPECT_EQ(with(way).status, 128 + number) << way;
      expect_whole(old, way);
    }
}

// As nohup starts it.
TEST_P(Faults, ASignalThatIsIgnoredChangesNothing) {
  learn();
  for (int n = 1; n <= calls_; ++n) {
    const std::string way = "FAULT=" + std::to_string(SIGHUP) + " FAULT_AT=" + std::to_string(n);
    put(before_);
    const Result result = shell("trap '' HUP; LD_PRELOAD='" SHIM "' FAULT_COUNT='" + count_ + "' " + way +
                                " \"$PPL\" " + GetParam().line);
    EXPECT_EQ(result.status, 0) << way << result.err;
    EXPECT_EQ(held(), made_) << way;
  }
}

TEST_P(Faults, WritesMayBeShortOrInterrupted) {
  learn();
  std::vector<std::string> ways{"FAULT_SHORT=1"};
  for (int n = 1; n <= calls_; ++n) ways.push_back("FAULT=EINTR FAULT_AT=" + std::to_string(n));
  for (const std::string& way : ways) {
    put(before_);
    const Result result = with(way);
    EXPECT_EQ(result.status, 0) << way << result.err;
    EXPECT_EQ(result.out, out_) << way;
    EXPECT_EQ(held(), made_) << way;
  }
}

// A device without room, and no place at all.
TEST_P(Faults, NoRoomOnStandardOutput) {
  if (!GetParam().to_stdout) return;
  for (const char* to : {" > /dev/full", " >&-"}) {
    put(before_);
    const Result result = shell("\"$PPL\" " + GetParam().line + to);
    EXPECT_EQ(result.status, 1) << to;
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << to << result.err;
    EXPECT_NE(result.err.find("can't write standard output"), std::string::npos) << to << result.err;
  }
}

// Nothing that is said comes into a file that has the number of what is closed.
TEST_P(Faults, ClosedStandardStreamsReachNoFile) {
  learn();
  for (const char* closed : {" <&-", " 2>&-", " <&- 2>&-", " <&- >&- 2>&-"}) {
    put(before_);
    const Result result = shell("\"$PPL\" " + GetParam().line + closed);
    const bool lost = GetParam().to_stdout && std::string(closed).find(" >&-") != std::string::npos;
    EXPECT_EQ(result.status, lost ? 1 : 0) << closed << result.err;
    expect_whole(before_, closed);
    if (!lost) {
      EXPECT_EQ(held(), made_) << closed;
    }
  }
}

// The limit is a kilobyte: what is said comes within.
TEST_P(Faults, ALimitOnTheSizeOfFilesLeavesNothing) {
  learn();
  bool small = true;
  for (const auto& [name, bytes] : made_) small = small && (before_.count(name) || bytes.size() <= 1024);
  if (small) return;
  put(before_);
  const Result result = shell("ulimit -f 1; \"$PPL\" " + GetParam().line);
  EXPECT_EQ(result.status, 1);
  EXPECT_NE(result.err.find("File too large"), std::string::npos) << result.err;
  expect_whole(before_, "ulimit -f 1");
}

INSTANTIATE_TEST_SUITE_P(Commands, Faults, testing::ValuesIn(commands()),
                         [](const auto& one) { return std::string(one.param.name); });

}  // namespace
