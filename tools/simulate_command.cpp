// ppl simulate: a picture to a raw Bayer frame, as a sensor would have delivered it.
#include <map>
#include <memory>

#include "commands.h"
#include "failure.h"
#include "file.h"
#include "formats.h"
#include "options.h"
#include "simulate.h"

namespace tool {
namespace {

struct Simulate {
  std::string picture, output, size, gains, centre, byte_order = "little";
  Simulation settings;
  bool packed = false;

  void run();
};

// "a,b,..." as numbers.
std::vector<double> numbers(const std::string& option, const std::string& value, size_t count) {
  std::vector<double> all;
  size_t from = 0;
  while (from <= value.size()) {
    const size_t to = std::min(value.find(',', from), value.size());
    const std::string one = value.substr(from, to - from);
    size_t used = 0;
    double number = 0;
    try {
      number = std::stod(one, &used);
    } catch (const std::exception&) {
      used = std::string::npos;
    }
    if (used != one.size()) break;
    all.push_back(number);
    from = to + 1;
  }
  if (all.size() != count || from != value.size() + 1)
    throw CLI::ValidationError(option,
                               text("takes ", count, " numbers with commas between them, not ", value));
  return all;
}

void Simulate::run() {
  if (!gains.empty()) {
    const std::vector<double> given = numbers("--gains", gains, 3);
    for (size_t c = 0; c < 3; ++c) settings.gains[c] = given[c] / 256;
  }
  if (!centre.empty()) {
    const std::vector<double> given = numbers("--centre", centre, 2);
    settings.centre_x = given[0];
    settings.centre_y = given[1];
  }
  if (packed && settings.bits != 10 && settings.bits != 12)
    throw CLI::ValidationError("--packed", "takes --bits 10 or 12");
  refuse_same_file(picture, output);
  Picture truth = read_png(picture);
  if (!size.empty()) {
    const Size to = parse_size("--size", size);
    truth = fitted(truth, to.width, to.height);
  }
  const Packing packing = packed                ? Packing::packed
                          : byte_order == "big" ? Packing::big_endian
                                                : Packing::little_endian;
  write_file(output, pack(simulate(truth, settings), packing));
}

}  // namespace

void add_simulate(CLI::App& app) {
  CLI::App* command = app.add_subcommand(
      "simulate", "A picture to the raw Bayer frame that a sensor would have delivered for it");
  const auto state = std::make_shared<Simulate>();
  Simulation& s = state->settings;
  command->add_option("PICTURE", state->picture, "PNG picture; - is standard input")->required();
  command->add_option("-o,--output", state->output, "File to write, without a header; - is standard output")
      ->type_name("FILE")
      ->required();
  command
      ->add_option(
          "--size", state->size,
          "Size of the frame, for example 640x480: the picture's middle, scaled (default: the picture's)")
      ->type_name("SIZE");
  static const std::map<std::string, Phase> phases{
      {"bggr", Phase::bggr}, {"gbrg", Phase::gbrg}, {"grbg", Phase::grbg}, {"rggb", Phase::rggb}};
  command
      ->add_option_function<std::string>(
          "--pattern", [&s](const std::string& name) { s.phase = phases.at(name); },
          "Colours of the first two samples of the first two rows: bggr, gbrg, grbg or rggb")
      ->check(CLI::IsMember({"bggr", "gbrg", "grbg", "rggb"}))
      ->default_str("bggr");
  command->add_option("--bits", s.bits, "Bits of a sample; above 8 in words of 16 bits")
      ->capture_default_str()
      ->check(in_range(8, 16));
  command->add_option("--byte-order", state->byte_order, "Of the words: little or big")
      ->capture_default_str()
      ->check(CLI::IsMember({"little", "big"}));
  command->add_flag("--packed", state->packed,
                    "10 or 12 bits without gaps: upper bytes first, then the lower bits");
  command->add_option("--black", s.black, "Black level in steps of the frame")->capture_default_str();
  command
      ->add_option("--gains", state->gains,
                   "Gains that balance the sensor in daylight, 256 is 1.0 (default 397,256,346)")
      ->type_name("R,G,B");
  command->add_option("--kelvin", s.kelvin, "Colour temperature of the light, 2000 to 10000")
      ->capture_default_str();
  command->add_option("--exposure", s.exposure, "Times the light")->capture_default_str();
  command->add_option("--shading", s.shading, "Share of the light that the furthest corner loses, 0 to 1")
      ->capture_default_str();
  command
      ->add_option("--centre", state->centre,
                   "Centre of the shading as shares of width and height (default 0.5,0.5)")
      ->type_name("X,Y");
  command
      ->add_option("--green-imbalance", s.green_imbalance, "How much brighter Gr is than Gb, 0.015 for 1.5 %")
      ->capture_default_str();
  command->add_option("--noise", s.noise, "Read noise, standard deviation in 1/255 of the range")
      ->capture_default_str();
  command->add_option("--shot-noise", s.shot_noise, "Photon noise, the same at full light")
      ->capture_default_str();
  command->add_option("--hot", s.hot, "Sites that stand at the largest sample")->capture_default_str();
  command->add_option("--dead", s.dead, "Sites that stand at 0")->capture_default_str();
  command->add_option("--seed", s.seed, "Of the random numbers: the same seed, the same frame")
      ->capture_default_str();
  command->callback([state] { state->run(); });
}

}  // namespace tool
