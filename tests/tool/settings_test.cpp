// Settings from and to files, and as others write them.
#include <ppl.h>

#include <algorithm>

#include <nlohmann/json.hpp>

#include "run.h"

namespace {

class Settings : public Tool {
 protected:
  static Bytes bytes(const std::string& words) { return Bytes(words.begin(), words.end()); }
};

// The picture of options, of the file made of them, and of the options made of the file.
TEST_F(Settings, FileAndOptionsAreTheSame) {
  ok(Arguments{"settings", "-q", "0", "-o", "s.json"} + every);
  ok(Arguments{"convert", sample, "-o", "a.i420", "-q", "0"} + sample_size + every);
  ok(Arguments{"convert", sample, "-o", "b.i420", "--settings", "s.json"} + sample_size);
  EXPECT_EQ(read("a.i420"), read("b.i420"));
  const Result line = run({"settings", "--settings", "s.json", "--as", "options"});
  write("line", bytes("\"$PPL\" convert '" + sample + "' -W 640 -H 480 -o c.i420 " + line.out));
  EXPECT_EQ(shell("export PPL; sh line").status, 0);
  EXPECT_EQ(read("a.i420"), read("c.i420"));
  ok({"settings", "--settings", "s.json", "-o", "t.json"});
  EXPECT_EQ(read("s.json"), read("t.json"));
  ok(Arguments{"stats", sample, "-q", "0", "-o", "a.txt"} + sample_size + every);
  ok(Arguments{"stats", sample, "--settings", "s.json", "-o", "b.txt"} + sample_size);
  EXPECT_EQ(read("a.txt"), read("b.txt"));
}

TEST_F(Settings, OptionsCountMoreThanTheFile) {
  ok({"settings", "-q", "2", "--gains", "300,256,300", "--gamma", "4", "-o", "s.json"});
  ok(Arguments{"convert", sample, "-o", "a.i420", "--settings", "s.json", "-q", "1", "--gamma", "2"} +
     sample_size);
  ok(Arguments{"convert", sample, "-o", "b.i420", "-q", "1", "--gains", "300,256,300", "--gamma", "2"} +
     sample_size);
  EXPECT_EQ(read("a.i420"), read("b.i420"));
  EXPECT_NE(run({"settings", "--settings", "s.json", "--gamma", "3"}).out.find("\"gamma\": 3"),
            std::string::npos);
}

// The defaults in the tool's table are those of a fresh context, and the document names every control with them.
TEST_F(Settings, DefaultsAreTheLibrarys) {
  const std::string full = run({"settings", "--full"}).out;
  const nlohmann::json j = nlohmann::json::parse(full);
  ppl_context* c = ppl_init();
  int32_t matrix[9];
  ppl_sensor_matrix(c, matrix);
  EXPECT_EQ(j["sensor_matrix"], nlohmann::json(matrix));
  EXPECT_EQ(j["quality"], ppl_quality(c));
  EXPECT_EQ(j["rgb_gain"], (nlohmann::json{ppl_nf88_r_gain(c), ppl_nf88_g_gain(c), ppl_nf88_b_gain(c)}));
  EXPECT_EQ(j["sat"], ppl_nf88_sat(c));
  EXPECT_EQ(j["hue"], ppl_hue_degree(c));
  EXPECT_EQ(j["GbGr_correction"], ppl_GbGr_correction_enabled(c) != 0);
  EXPECT_EQ(j["GbGr_correction_diff_threshold"], ppl_GbGr_correction_diff_threshold(c));
  EXPECT_EQ(j["medium_filter_diff_threshold"], ppl_medium_filter_diff_threshold(c));
  EXPECT_EQ(j["medium_filter_hot_pixel_threshold"], ppl_medium_filter_hot_pixel_threshold(c));
  EXPECT_EQ(j["medium_filter_dead_pixel_threshold"], ppl_medium_filter_dead_pixel_threshold(c));
  EXPECT_EQ(j["edge_threshold"], ppl_edge_threshold(c));
  EXPECT_EQ(j["edge_threshold2"], ppl_edge_threshold2(c));
  EXPECT_EQ(j["nf88_edge_enhance_factor"], ppl_nf88_edge_enhance_factor(c));
  EXPECT_EQ(j["CFA_T0_threshold"], ppl_CFA_T0_threshold(c));
  EXPECT_EQ(j["CFA_T1_threshold"], ppl_CFA_T1_threshold(c));
  EXPECT_EQ(j["noise_filter_G_12T_threshold"], ppl_noise_filter_G_12T_threshold(c));
  EXPECT_EQ(j["qual_BmGb_min_max"], (nlohmann::json{ppl_qual_BmGb_min(c), ppl_qual_BmGb_max(c)}));
  EXPECT_EQ(j["qual_BmGb_p_GrmR_min_max"],
            (nlohmann::json{ppl_qual_BmGb_p_GrmR_min(c), ppl_qual_BmGb_p_GrmR_max(c)}));
  EXPECT_EQ(j["qAE_RGB_min_max"], (nlohmann::json{ppl_qAE_RGB_min(c), ppl_qAE_RGB_max(c)}));
  ppl_free(c);
  // The whole file at its defaults changes nothing.
  write("full.json", bytes(full));
  ok(Arguments{"convert", sample, "-o", "a.i420", "--settings", "full.json"} + sample_size);
  ok(Arguments{"convert", sample, "-o", "b.i420"} + sample_size);
  EXPECT_EQ(read("a.i420"), read("b.i420"));
  const Bytes page = read_whole(DOCS "/settings.md");
  const std::string document(page.begin(), page.end());
  for (const auto& [key, value] : j.items()) {
    if (key == "ppl_settings") continue;
    const size_t row = document.find("| `" + key + "` |");
    ASSERT_NE(row, std::string::npos) << key;
    std::string shown;
    if (value.is_array())
      for (const auto& one : value) shown += (shown.empty() ? "" : ", ") + one.dump();
    else
      shown = value.dump();
    EXPECT_NE(document.substr(row, document.find('\n', row) - row).find("| " + shown + " |"),
              std::string::npos)
        << key;
  }
}

// What is written as C compiles and sets what the options set.
// What the library was built with, its programs have to be linked with.
#if defined(__SANITIZE_ADDRESS__)
#define SANITIZERS "-fsanitize=address,undefined "
#else
#define SANITIZERS ""
#endif

TEST_F(Settings, AsC) {
  if (shell("command -v cc > /dev/null").status != 0) GTEST_SKIP() << "no C compiler";
  const Result calls = run(Arguments{"settings", "-q", "0", "--as", "c"} + every);
  const std::string program =
      "#include <ppl.h>\n#include <stdio.h>\n#include <stdlib.h>\nint main(void) {\n"
      "  enum { width = 640, height = 480, lens_table_bytes = 2 * width * (height + 1) };\n"
      "  static uint16_t lens_table[width * (height + 1)];\n"
      "  static _Alignas(64) uint8_t source[width * height], frame[width * height * 3 / 2];\n"
      "  ppl_context *context = ppl_init();\n  if (fread(source, 1, sizeof source, stdin) != sizeof source) "
      "return 1;\n  " +
      calls.out +
      "  if (!ppl_process_blrtoi420(context, source, frame, width, height, width)) return 1;\n"
      "  return fwrite(frame, 1, sizeof frame, stdout) != sizeof frame;\n}\n";
  write("c.c", bytes(program));
  const Result built =
      shell("cc -std=c11 -Wall -Werror " SANITIZERS "-I '" INCLUDE "' c.c '" LIBRARY "' -o c && ./c < '" +
            sample + "' > c.i420");
  ASSERT_EQ(built.status, 0) << built.err << program;
  ok(Arguments{"convert", sample, "-o", "a.i420", "-q", "0"} + sample_size + every);
  EXPECT_EQ(read("a.i420"), read("c.i420"));
}

TEST_F(Settings, AsElement) {
  EXPECT_EQ(run({"settings", "--as", "element", "-q", "1", "--black", "12", "--gains", "397,256,346",
                 "--gbgr", "--qae", "20,200"})
                .out,
            "quality=1 black-level=12 red-gain=397 green-gain=256 blue-gain=346 green-balance=true "
            "qae=\"<20,200>\"\n");
}

TEST_F(Settings, BadFiles) {
  const std::vector<std::pair<std::string, std::string>> mistakes{
      {"", "line 1"},
      {"{\"ppl_settings\": 1,\n\"hue\": }", "line 2"},
      {"[]", "must be an object"},
      {"{\"hue\": 3}", "\"ppl_settings\": 1 is missing"},
      {"{\"ppl_settings\": 2}", "version 2"},
      {"{\"ppl_settings\": 1, \"rgb_gian\": [1, 2, 3]}", "did you mean rgb_gain?"},
      {"{\"ppl_settings\": 1, \"rgb_gain\": [1, 2]}", "3 whole numbers from 0 to 2047"},
      {"{\"ppl_settings\": 1, \"rgb_gain\": [1, 2, 2048]}", "2048"},
      {"{\"ppl_settings\": 1, \"hue\": 3.5}", "hue takes a whole number from -360 to 360, not 3.5"},
      {"{\"ppl_settings\": 1, \"hue\": \"3\"}", "not \"3\""},
      {"{\"ppl_settings\": 1, \"hue\": 18446744073709551615}", "hue takes"},
      {"{\"ppl_settings\": 1, \"quality\": 16}", "from 0 to 15"},
      {"{\"ppl_settings\": 1, \"GbGr_correction\": 1}", "true or false, not 1"},
      {"{\"ppl_settings\": 1, \"lens_correction\": true}", "an object like"},
      {"{\"ppl_settings\": 1, \"lens_correction\": {\"f3\": 1}}", "no control f3"},
      {"{\"ppl_settings\": 1, \"lens_correction\": {\"f1\": 1, \"f1_rshift_count\": 12}}", "from 13 to 63"},
  };
  for (const auto& [file, says] : mistakes) {
    write("s.json", bytes(file));
    const Result result =
        run(Arguments{"convert", sample, "-o", "x.png", "--settings", "s.json"} + sample_size);
    EXPECT_EQ(result.status, 1) << file;
    EXPECT_EQ(std::count(result.err.begin(), result.err.end(), '\n'), 1) << result.err;
    EXPECT_NE(result.err.find("s.json"), std::string::npos) << result.err;
    EXPECT_NE(result.err.find(says), std::string::npos) << says << " is not in " << result.err;
    EXPECT_EQ(files(), std::vector<std::string>{"s.json"});
  }
  const Result endless = shell("timeout 200 \"$PPL\" settings --settings /dev/zero");
  EXPECT_EQ(endless.status, 1);
  EXPECT_NE(endless.err.find("/dev/zero"), std::string::npos);
}

}  // namespace
