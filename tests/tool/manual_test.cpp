// The manual pages and the completion of Bash.
#include <sstream>

#include "run.h"

namespace {

class Manual : public Tool {
 protected:
  void make() { ok({"manual", "."}); }
  std::string text(const std::string& name) const {
    const Bytes bytes = read(name);
    return std::string(bytes.begin(), bytes.end());
  }
  // What Bash would offer behind these words.
  std::string offers(const std::string& words) const {
    const Result result = shell("bash -c '. ./ppl.bash; COMP_WORDS=(" + words +
                                "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); _ppl; echo \"${COMPREPLY[*]}\"'");
    EXPECT_EQ(result.status, 0) << result.err;
    return result.out;
  }
};

// A page for every command of the help, and in it every option of the command's help.
TEST_F(Manual, NamesEverything) {
  make();
  const std::string help = run({"--help"}).out, overview = text("ppl.1");
  for (const char* command :
       {"convert", "compare", "stats", "deinterlace", "simulate", "settings", "gains", "lens"}) {
    EXPECT_NE(help.find(std::string("  ") + command), std::string::npos) << command;
    EXPECT_NE(overview.find(std::string("ppl\\-") + command + "\\fR(1)"), std::string::npos) << command;
    const std::string page = text(std::string("ppl-") + command + ".1");
    EXPECT_NE(page.find(".SH EXAMPLES\n.PP"), std::string::npos) << command;
    std::istringstream words(run({command, "--help"}).out);
    for (std::string word; words >> word;) {
      if (!word.starts_with("--") || word.size() < 4) continue;
      std::string escaped;
      for (const char c : word.substr(0, word.find_first_of(".,;:)")))
        escaped += c == '-' ? std::string("\\-") : std::string(1, c);
      EXPECT_NE(page.find(escaped), std::string::npos) << word << " of " << command;
    }
  }
  EXPECT_EQ(help.find("manual"), std::string::npos);
}

TEST_F(Manual, PagesAreWellFormed) {
  make();
  if (shell("command -v man > /dev/null && command -v groff > /dev/null").status != 0)
    GTEST_SKIP() << "man or groff is not installed";
  for (const char* name : {"ppl.1", "ppl-convert.1", "ppl-settings.1", "ppl-lens.1"}) {
    const Result result =
        shell(std::string("MANROFFSEQ= MANWIDTH=80 man --warnings -E UTF-8 -l -Tutf8 -Z ./") + name +
              " > /dev/null");
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.err, "") << name;
  }
}

TEST_F(Manual, BashCompletes) {
  make();
  write("frame.raw", Bytes(1));
  EXPECT_EQ(offers("ppl con"), "convert\n");
  EXPECT_EQ(offers("ppl convert --auto-w"), "--auto-white-balance\n");
  EXPECT_EQ(offers("ppl convert --pattern g"), "gbrg grbg\n");
  EXPECT_EQ(offers("ppl convert --format y"), "y4m yuyv\n");
  EXPECT_EQ(offers("ppl convert fra"), "frame.raw\n");
  EXPECT_EQ(offers("ppl convert -o fra"), "frame.raw\n");
  EXPECT_EQ(offers("ppl convert -W f"), "\n");
}

}  // namespace
