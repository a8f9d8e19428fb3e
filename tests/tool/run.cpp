#include "run.h"

#include <png.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace fs = std::filesystem;

Tool::Tool() {
  std::string pattern = (fs::temp_directory_path() / "tool_test.XXXXXX").string();
  directory_ = mkdtemp(pattern.data());
}

Tool::~Tool() {
  fs::remove_all(directory_);
}

Result Tool::run(const Arguments& arguments) const {
  std::string line = "exec '" TOOL "'";
  for (const std::string& word : arguments) line += " '" + word + "'";
  return shell(line);
}

Result Tool::shell(const std::string& line) const {
  const std::string out = directory_ + ".out", err = directory_ + ".err";
  const std::string whole = "cd '" + directory_ + "' && PPL='" TOOL "' && exec > '" + out + "' 2> '" + err +
                            "' && {\n" + line + "\n}";
  const pid_t child = fork();
  if (child == 0) {
    // As a terminal starts it, however the tests were started: in the background, without a terminal, by a program that
    // ignores what would end it.
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    for (const int number : {SIGINT, SIGQUIT, SIGHUP, SIGTERM, SIGPIPE, SIGXFSZ}) signal(number, SIG_DFL);
    execl("/bin/sh", "sh", "-c", whole.c_str(), nullptr);
    _exit(127);
  }
  int status = 0;
  struct rusage used;
  wait4(child, &status, 0, &used);
  Result result{WIFEXITED(status) ? WEXITSTATUS(status) : -1, {}, {}, used.ru_maxrss};
  for (const auto& [name, text] : {std::pair{out, &result.out}, std::pair{err, &result.err}}) {
    const Bytes bytes = read_whole(name);
    text->assign(bytes.begin(), bytes.end());
    fs::remove(name);
  }
  return result;
}

void Tool::ok(const Arguments& arguments) const {
  const Result result = run(arguments);
  EXPECT_EQ(result.status, 0) << result.err;
  EXPECT_EQ(result.err, "");
}

void Tool::write(const std::string& name, const Bytes& bytes) const {
  std::ofstream(path(name), std::ios::binary)
      .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
}

Bytes Tool::read(const std::string& name) const {
  return read_whole(path(name));
}

Rgb Tool::png(const std::string& name) const {
  return read_picture(path(name));
}

std::vector<std::string> Tool::files() const {
  std::vector<std::string> names;
  for (const auto& entry : fs::directory_iterator(directory_))
    names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

Bytes read_whole(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file.good()) << path;
  return Bytes(std::istreambuf_iterator<char>(file), {});
}

Rgb read_picture(const std::string& path) {
  png_image image{};
  image.version = PNG_IMAGE_VERSION;
  Rgb picture;
  if (!png_image_begin_read_from_file(&image, path.c_str())) {
    ADD_FAILURE() << path << ": " << image.message;
    return picture;
  }
  image.format = PNG_FORMAT_RGB;
  picture.width = image.width;
  picture.height = image.height;
  picture.pixels.resize(PNG_IMAGE_SIZE(image));
  EXPECT_TRUE(png_image_finish_read(&image, nullptr, picture.pixels.data(), 0, nullptr)) << image.message;
  return picture;
}

double psnr(const Rgb& a, const Rgb& b) {
  EXPECT_EQ(a.pixels.size(), b.pixels.size());
  double sum = 0;
  for (size_t i = 0; i < a.pixels.size(); ++i) sum += std::pow(a.pixels[i] - b.pixels[i], 2);
  return 10 * std::log10(255.0 * 255.0 * static_cast<double>(a.pixels.size()) / sum);
}
