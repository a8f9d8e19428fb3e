// The files that the command line tool reads: headerless frames of any layout in files and pipes, PNG pictures and
// settings, each of any content, each under options that may not fit it.
#include <png.h>
#include <stddef.h>
#include <stdint.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>
#include <zlib.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "failure.h"
#include "frame_file.h"
#include "frame_stream.h"
#include "fuzz/input.h"
#include "picture.h"
#include "settings.h"

// Nothing is told here, however much there is to tell.
namespace tool {
std::string& speaker() {
  static std::string name = "fuzz";
  return name;
}
void complain(const std::string&) {}
bool complained() {
  return false;
}
void note(const std::string&) {}
}  // namespace tool

namespace {

using namespace fuzz;

void require(bool holds) {
  if (!holds) abort();
}

// A file without a directory, opened by its path like any other.
class memory_file {
 public:
  // `size`: longer than the content, the rest is zeros.
  explicit memory_file(const std::string& content, size_t size = 0) : file_(memfd_create("fuzz", 0)) {
    require(file_ >= 0 &&
            write(file_, content.data(), content.size()) == static_cast<ssize_t>(content.size()));
    if (size > content.size()) require(ftruncate(file_, static_cast<off_t>(size)) == 0);
  }
  memory_file(const memory_file&) = delete;
  memory_file& operator=(const memory_file&) = delete;
  ~memory_file() { close(file_); }
  std::string path() const { return "/proc/self/fd/" + std::to_string(file_); }

 private:
  int file_;
};

// Standard input is a pipe that holds the content, which is less than a pipe takes.
void feed_standard_input(const std::string& content) {
  int ends[2];
  require(pipe(ends) == 0 && content.size() <= 65536);
  require(write(ends[1], content.data(), content.size()) == static_cast<ssize_t>(content.size()));
  close(ends[1]);
  require(dup2(ends[0], STDIN_FILENO) == STDIN_FILENO);
  close(ends[0]);
}

// Settings that are taken are the same after a way through each file that they are written to.
void settings(input& in) {
  const memory_file file(in.ConsumeRemainingBytesAsString());
  std::optional<tool::Settings> read;
  try {
    read = tool::read_settings(file.path());
  } catch (const tool::Failure&) {
    return;
  }
  for (const tool::Settings& one : {*read, tool::filled(*read)}) {
    for (const char* as : {"options", "c", "element"}) tool::written(one, as);
    const std::string json = tool::written(one, "json");
    const memory_file again(json);
    require(tool::written(tool::read_settings(again.path()), "json") == json);
  }
}

uint32_t word_at(const std::string& bytes, size_t at) {
  uint32_t word = 0;
  for (size_t i = 0; i < 4; ++i) word = word << 8 | static_cast<uint8_t>(bytes[at + i]);
  return word;
}

// Behind the signature: length, name, data and checksum of one chunk after the other.
void mend_checksums(std::string& png) {
  for (size_t at = 8; at + 12 <= png.size();) {
    const size_t length = word_at(png, at);
    if (length > png.size() - at - 12) return;
    const auto* chunk = reinterpret_cast<const Bytef*>(png.data() + at + 4);
    const auto sum = static_cast<uint32_t>(crc32(0, chunk, static_cast<uInt>(length + 4)));
    at += 8 + length;
    for (size_t i = 0; i < 4; ++i) png[at++] = static_cast<char>(sum >> (24 - 8 * i));
  }
}

void picture(input& in) {
  std::optional<tool::Size> size;
  if (in.ConsumeIntegralInRange(0, 3) == 0)
    size = tool::Size{in.ConsumeIntegralInRange<uint32_t>(0, 64), in.ConsumeIntegralInRange<uint32_t>(0, 64)};
  const bool mend = in.ConsumeIntegralInRange(0, 7) != 0;
  std::string content = in.ConsumeRemainingBytesAsString();
  if (mend) mend_checksums(content);
  // Sizes that the tool takes and a run can't afford.
  constexpr uint32_t most = 16384, affordable = 1 << 18;
  if (content.size() >= 24) {
    const uint32_t width = word_at(content, 16), height = word_at(content, 20);
    if (width <= most && height <= most && width * height > affordable) return;
  }
  const memory_file file(content);
  std::optional<tool::Picture> read;
  try {
    read = tool::read_png(file.path(), size);
  } catch (const tool::Failure&) {
    return;
  }
  require(read->rgb.size() == size_t{3} * read->width * read->height);
  require(!size || (read->width == size->width && read->height == size->height));
  const tool::Bytes png = tool::encode_png(*read);
  const memory_file again(std::string(png.begin(), png.end()));
  const tool::Picture back = tool::read_png(again.path());
  require(back.width == read->width && back.height == read->height && back.rgb == read->rgb);
}

// The options that say where frames stand, most of them left out.
std::vector<std::string> options(input& in) {
  std::vector<std::string> words;
  const auto rarely = [&](int out_of) { return in.ConsumeIntegralInRange(1, out_of) == 1; };
  const auto add = [&](const char* option, uint64_t value) {
    words.push_back(option);
    words.push_back(std::to_string(value));
  };
  const auto side = [&] {
    return rarely(12) ? in.ConsumeIntegralInRange<uint32_t>(0, 20000)
                      : in.ConsumeIntegralInRange<uint32_t>(1, 40);
  };
  if (!rarely(6)) add("-W", side());
  if (!rarely(6)) add("-H", side());
  if (rarely(3)) add("--bits", in.PickValueInArray<uint64_t>({8, 10, 12, 14, 16, 9}));
  if (rarely(4)) words.push_back("--packed");
  if (rarely(8)) words.insert(words.end(), {"--byte-order", "big"});
  if (rarely(8)) words.insert(words.end(), {"--pattern", in.PickValueInArray({"gbrg", "grbg", "rggb", "x"})});
  if (rarely(4)) add("--stride", in.ConsumeIntegralInRange<uint64_t>(0, rarely(8) ? 1 << 21 : 100));
  if (rarely(6)) add("--skip", in.ConsumeIntegralInRange<uint64_t>(0, rarely(8) ? uint64_t{1} << 49 : 700));
  if (rarely(6)) add("--frame", in.ConsumeIntegralInRange<uint64_t>(0, rarely(8) ? uint64_t{1} << 33 : 9));
  if (rarely(3)) words.push_back("--all");
  return words;
}

// One frame, or a recording over several files, by the way that convert goes.
void frames(input& in) {
  constexpr tool::Format formats[] = {tool::Format::bayer, tool::Format::bayer, tool::Format::bayer,
                                      tool::Format::i420,  tool::Format::yuyv,  tool::Format::uyvy,
                                      tool::Format::rgb24, tool::Format::rgb32};
  const tool::Format format = in.PickValueInArray(formats);
  const bool go_on = in.ConsumeBool();
  std::vector<std::string> words = options(in);
  // Sizes that sensors have: what is missing is zeros.
  const size_t size =
      in.PickValueInArray<size_t>({0, 0, 0, 19200, 24000, 28800, 38400, 38401, 76800, 101376});
  std::vector<std::unique_ptr<memory_file>> files;
  const int count = in.ConsumeIntegralInRange(0, 7) == 0 ? in.ConsumeIntegralInRange(2, 4) : 1;
  for (int i = 0; i < count; ++i) {
    const std::string content =
        i + 1 < count ? in.ConsumeRandomLengthString() : in.ConsumeRemainingBytesAsString();
    if (size == 38401) {  // the mark of a pipe
      feed_standard_input(content);
      words.push_back("-");
    } else {
      files.push_back(std::make_unique<memory_file>(content, size));
      words.push_back(files.back()->path());
    }
  }
  std::vector<const char*> pointers{"fuzz"};
  for (const std::string& word : words) pointers.push_back(word.c_str());
  tool::FrameFile where;
  CLI::App app;
  where.add_recording_options(app, "");
  try {
    app.parse(static_cast<int>(pointers.size()), pointers.data());
    where.settle(format);
    if (uint64_t{where.width} * where.height > 1 << 18 || uint64_t{where.stride} * where.height > 1 << 20)
      return;
    tool::FrameStream stream(where, format, go_on);
    const exact frame(stream.frame_size(), 0, 0);
    uint64_t number = 0;
    while (stream.next({frame.at(), frame.bytes()})) ++number;
    require(go_on || !stream.frames() || number == *stream.frames());
  } catch (const CLI::ParseError&) {
  } catch (const tool::Failure&) {
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  input in(data, size);
  switch (in.ConsumeIntegralInRange(0, 3)) {
    case 0:
      settings(in);
      break;
    case 1:
      picture(in);
      break;
    default:
      frames(in);
  }
  return 0;
}
