// ppl manual: writes the manual pages and the completion of Bash from what the parser knows, so that they cannot differ
// from it. Run by the build; not shown in the help.
#include <algorithm>
#include <memory>

#include "commands.h"
#include "failure.h"
#include "file.h"
#include "help.h"

namespace tool {
namespace {

struct Example {
  const char* command;
  const char* line;
};
constexpr Example examples[] = {
    {"convert", "ppl convert frame.raw -W 640 -H 480 -o picture.png --black 12 --gains 397,256,346"},
    {"convert", "ppl convert video.raw -W 1280 -H 960 --pattern rggb --bits 10 --all -o video.y4m"},
    {"convert", "ppl convert frame.raw --auto-white-balance --auto-exposure -o picture.png"},
    {"compare", "ppl compare frame.raw -W 640 -H 480 --truth truth.png -o sheet.png"},
    {"compare", "ppl compare picture.png --truth truth.png --difference difference.png"},
    {"stats", "ppl stats frame.raw -W 640 -H 480 --json"},
    {"deinterlace", "ppl deinterlace video.yuyv --frames -W 640 -H 480 -o video.y4m"},
    {"simulate", "ppl simulate picture.png --pattern rggb --bits 10 --kelvin 3000 -o frame.raw"},
    {"settings", "ppl settings --black 12 --gains 397,256,346 --gbgr -o camera.json"},
    {"gains", "ppl gains frame.raw -W 640 -H 480 --region 300,200,64,64"},
    {"lens", "ppl lens white.raw -W 640 -H 480 --as json -o lens.json"},
};

// Text of a page: a hyphen that may be copied, and no line that begins like a request.
std::string escaped(const std::string& plain) {
  std::string out;
  for (const char c : plain) {
    if (c == '\\')
      out += "\\e";
    else if (c == '-')
      out += "\\-";
    else if (c == '\n')
      out += ' ';
    else
      out += c;
  }
  if (!out.empty() && (out[0] == '.' || out[0] == '\'')) out.insert(0, "\\&");
  return out;
}

std::string head(const std::string& name, const std::string& what) {
  std::string title = name;
  for (char& c : title) c = static_cast<char>(toupper(static_cast<unsigned char>(c)));
  return text(".TH ", escaped(title), " 1 \"\" \"ppl " PPL_TOOL_VERSION "\" \"ppl\"\n.SH NAME\n",
              escaped(name), " \\- ", escaped(what), "\n");
}

const std::string exit_status =
    ".SH EXIT STATUS\n.TP\n0\ndone\n.TP\n1\nthe work can't be done: a file, a device or memory is not as it "
    "must be\n"
    ".TP\n2\nthe command line asks for what can't be\n.PP\nEvery failure is one line on standard error. An "
    "output "
    "file appears whole or not at all.\n";

std::string names_of(const CLI::Option& option) {
  std::string names;
  for (const std::string& name : option.get_snames()) names += (names.empty() ? "-" : ", -") + name;
  for (const std::string& name : option.get_lnames()) names += (names.empty() ? "--" : ", --") + name;
  return names;
}

std::string page(const CLI::App& command) {
  const std::string name = "ppl-" + command.get_name();
  std::string out = head(name, command.get_description());
  std::string positional;
  for (const CLI::Option* option :
       command.get_options([](const CLI::Option* o) { return o->get_positional(); }))
    positional +=
        " \\fI" + escaped(option->get_single_name()) + "\\fR" + (option->get_expected_max() > 1 ? "..." : "");
  out += ".SH SYNOPSIS\n\\fBppl " + command.get_name() + "\\fR" + positional + " [\\fIoptions\\fR]\n";
  for (const CLI::Option* option :
       command.get_options([](const CLI::Option* o) { return o->get_positional(); }))
    out += ".PP\n\\fI" + escaped(option->get_single_name()) + "\\fR: " + escaped(option->get_description()) +
           "\n";
  for (const std::string& group : command.get_groups()) {
    const auto options = command.get_options(
        [&](const CLI::Option* o) { return o->get_group() == group && o->nonpositional(); });
    if (options.empty() || group.empty()) continue;
    std::string title = group;
    for (char& c : title) c = static_cast<char>(toupper(static_cast<unsigned char>(c)));
    out += ".SH " + escaped(title) + "\n";
    for (const CLI::Option* option : options) {
      out += ".TP\n\\fB" + escaped(names_of(*option)) + "\\fR";
      if (const std::string value = value_of(*option); !value.empty())
        out += " \\fI" + escaped(value) + "\\fR";
      out += "\n" + escaped(sentence_of(*option)) + "\n";
    }
  }
  out += ".SH EXAMPLES\n";
  for (const Example& example : examples)
    if (command.get_name() == example.command) out += ".PP\n.nf\n" + escaped(example.line) + "\n.fi\n";
  return out + exit_status + ".SH SEE ALSO\n\\fBppl\\fR(1)\n";
}

std::string overview(const CLI::App& app, const std::vector<const CLI::App*>& commands) {
  std::string out = head("ppl", "raw frames of a camera to pictures, from the command line");
  out +=
      ".SH SYNOPSIS\n\\fBppl\\fR \\fIcommand\\fR [\\fIoptions\\fR]\n.PP\n\\fBppl \\-\\-version\\fR\n.SH "
      "DESCRIPTION\n" +
      escaped(app.get_description()) +
      ".\nFrames are read from files without a header, their rows back to back, or from standard input.\n"
      ".SH COMMANDS\n";
  for (const CLI::App* command : commands)
    out += ".TP\n\\fBppl\\-" + escaped(command->get_name()) + "\\fR(1)\n" +
           escaped(command->get_description()) + "\n";
  return out + exit_status;
}

// Words that an option's value is one of, from the sentence of its validator; empty for others.
std::string choices(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  const size_t from = type.find('{'), to = type.find('}');
  if (from == std::string::npos || to == std::string::npos) return {};
  std::string words = type.substr(from + 1, to - from - 1);
  std::replace(words.begin(), words.end(), ',', ' ');
  return words;
}

std::string completion(const std::vector<const CLI::App*>& commands) {
  std::string names;
  for (const CLI::App* command : commands) names += (names.empty() ? "" : " ") + command->get_name();
  std::string out =
      "# Completion of ppl for Bash: commands, options, their values, and files where a file is wanted.\n"
      "_ppl() {\n  local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]} options=\n  "
      "COMPREPLY=()\n"
      "  if [ \"$COMP_CWORD\" -eq 1 ]; then\n    COMPREPLY=($(compgen -W \"" +
      names + " --help --version\" -- \"$word\"))\n    return\n  fi\n  case ${COMP_WORDS[1]}:$before in\n";
  std::string lists;
  for (const CLI::App* command : commands) {
    std::string list;
    for (const CLI::Option* option : command->get_options()) {
      std::string pattern;
      for (const std::string& n : option->get_snames())
        pattern += (pattern.empty() ? "" : "|") + command->get_name() + ":-" + n;
      for (const std::string& n : option->get_lnames()) {
        pattern += (pattern.empty() ? "" : "|") + command->get_name() + ":--" + n;
        list += (list.empty() ? "--" : " --") + n;
      }
      const std::string words = choices(*option);
      if (pattern.empty() || option->get_items_expected_max() == 0) continue;
      if (!words.empty())
        out += "    " + pattern + ") COMPREPLY=($(compgen -W \"" + words + "\" -- \"$word\")); return ;;\n";
      else if (!(option->check_lname("output") || option->check_lname("settings") ||
                 option->check_lname("truth") || option->check_lname("difference")))
        out += "    " + pattern + ") return ;;\n";  // a number: nothing to offer
    }
    lists += "    " + command->get_name() + ") options=\"" + list + "\" ;;\n";
  }
  return out + "  esac\n  case ${COMP_WORDS[1]} in\n" + lists +
         "  esac\n  case $word in\n    -*) COMPREPLY=($(compgen -W \"$options\" -- \"$word\")) ;;\n"
         "    *) compopt -o filenames 2>/dev/null; COMPREPLY=($(compgen -f -- \"$word\")) ;;\n  esac\n}\n"
         "complete -F _ppl ppl\n";
}

void write_text(const std::string& path, const std::string& lines) {
  OutputFile file(path);
  file.write(lines);
  file.commit();
}

}  // namespace

void add_manual(CLI::App& app) {
  CLI::App* command =
      app.add_subcommand("manual", "Write the manual pages and the completion of Bash")->group("");
  const auto folder = std::make_shared<std::string>();
  command->add_option("FOLDER", *folder, "Where they go")->required();
  command->callback([&app, folder] {
    std::vector<const CLI::App*> commands;
    for (const CLI::App* one : app.get_subcommands({}))
      if (!one->get_group().empty()) commands.push_back(one);
    write_text(*folder + "/ppl.1", overview(app, commands));
    for (const CLI::App* one : commands) write_text(*folder + "/ppl-" + one->get_name() + ".1", page(*one));
    write_text(*folder + "/ppl.bash", completion(commands));
  });
}

}  // namespace tool
