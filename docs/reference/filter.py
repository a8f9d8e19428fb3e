"""A header as Doxygen reads it: printed with its plain comments turned into documentation.

    filter.py HEADER

The headers are written to be read as they are. What their comments belong to follows from where they stand:

  - The first comment of a file is the file's.
  - `---- Title ----` begins a group, with the rest of that comment as its text, up to the next such comment.
  - A comment that begins a line belongs to the declarations below it, up to a blank line or the next comment.
  - A comment within a structure or enumeration belongs to the member on its line, or to the one below.
  - An enumerator without a comment takes the sentence that a function of the header returns for it.
  - A frame call or conversion that has its group's text alone gets a line on what its name says.

Indented lines become tables, lists, paragraphs or text as it stands. Names that the headers beside this one declare
become links.
"""

import html
import pathlib
import re
import sys

FORMATS = {"i420": "I420", "yuyv": "YUYV", "uyvy": "UYVY", "rgb24": "RGB24", "rgb32": "RGB32"}
SIZES = {
    "": "to {}, at the same size.",
    "_deci_2_1": "to {}, at half size.",
    "_intp_1_2": "to {}, at double size.",
    "_intp_1_2_stride": "to {}, at double size, from rows 2 * width bytes apart.",
    "_intp_1_4_stride": "to {}, at the decimation in force, from rows 4 * width bytes apart.",
    "_scaling_stride": "to {}, resampled to out_width x out_height.",
}


def said_by_name(name):
    """What a frame call or conversion does, in one line; None for any other function."""
    lower = name.lower()
    if found := re.fullmatch(r"ppl_process_blrto(\w+)", name):
        return f"A raw Bayer frame to {FORMATS[found[1]]}, at the decimation in force."
    if found := re.fullmatch(r"BaylorTo([A-Z0-9]+?)MMX(\w*)", name):
        if found[2] == "_scaling_stride" and found[1] == "UYVY":
            return "A raw Bayer frame to UYVY in scratch; not resampled, destination stays untouched."
        if found[2] == "_scaling_stride" and found[1].startswith("RGB"):
            return "Converts nothing: destination is filled with 255, the result is always false."
        return "A raw Bayer frame " + SIZES[found[2]].format(found[1])
    tested = "" if name.startswith("ppl_process") else " Pointers that are no multiple of 8: a last-resort picture."
    if re.fullmatch(r"(ppl_process_)?rgb24torgb32(mmx)?", lower):
        return "Converts nothing; the result is false."
    if re.search(r"yyyyto", lower):
        return "A frame of the 12-bit layout to I420."
    if found := re.fullmatch(r"(?:ppl_process_)?(intl)?(yuyv|uyvy)to(\w+?)(?:mmx)?(_no_motion)?", lower):
        kind, to = FORMATS[found[2]], FORMATS[found[3]]
        if not found[1]:
            return f"A packed {kind} frame to {to}." + tested
        return f"Fields of {kind} to a whole frame of {to}, {'woven' if found[4] else 'motion tested'}." + tested
    return None


def source_of(header):
    """A header as a processor without vector code sees it."""
    return re.sub(r"^#(?:if|elif) defined\(PPL_PREPARE_(?:SSE2|NEON)\).*?^#else\n(.*?)^#endif\n", r"\1",
                  header.read_text(), flags=re.M | re.S)


def functions_of(header):
    """Names of the functions that a header declares or defines for others."""
    text = re.sub(r"/\*.*?\*/", "", source_of(header), flags=re.S)
    return set(re.findall(r"^(?:PPL_API|PPL_HELPER_INLINE|static inline)[^;{}]*?(\w+)\(", text, re.M))


def names_of(header):
    """Names to link: functions of all headers beside this one."""
    root = header.resolve().parent.parent
    return {name for path in [root / "include/ppl.h", *sorted((root / "helpers").glob("*.h"))]
            for name in functions_of(path)}


class Text:
    """Comment text to what Doxygen reads."""

    def __init__(self, names):
        self.names = names

    def plain(self, text, links=True):
        def word(found):
            return f'\\ref {found[0]} "{found[0]}"' if links and found[0] in self.names else escape(found[0])

        def escape(piece):
            piece = html.escape(piece, quote=False)
            piece = re.sub(r"([\\@#%$\"])", r"\\\1", piece)
            return piece.replace("::", "\\::").replace("--", "\\--")

        text = "".join(word(piece) if re.fullmatch(r"\w+", piece[0]) else escape(piece[0])
                       for piece in re.finditer(r"\w+|\W+", text))
        return re.sub(r"`([^`]+)`", r"<code>\1</code>", text)

    def paragraph(self, lines):
        text = self.plain(" ".join(line.strip() for line in lines))
        return re.sub(r"^((?:[A-Z0-9]+[ -]){0,8}[A-Z]{3,})\. ", r"<b>\1.</b> ", text)

    def indented(self, lines):
        """A block of indented lines."""
        margin = min(len(line) - len(line.lstrip()) for line in lines if line.strip())
        lines = [line[margin:].rstrip() for line in lines]
        if lines[0].startswith("- "):
            items = re.split(r"\n(?=- )", "\n".join(lines))
            return "\n".join("- " + self.paragraph(item[2:].split("\n")) for item in items)
        rows = self.rows(lines)
        if rows:
            cells = "\n".join(f"<tr><td>{self.plain(left)}</td><td>{self.paragraph(right)}</td></tr>"
                              for left, right in rows)
            return f'<table class="doxtable">\n{cells}\n</table>'
        prose = all("  " not in line and not line.startswith(" ") and line for line in lines)
        if prose and len(lines) > 1 and all(len(line) > 70 for line in lines[:-1]):
            return self.paragraph(lines)
        return "\\verbatim\n" + "\n".join(lines).strip("\n") + "\n\\endverbatim"

    @staticmethod
    def rows(lines):
        """Rows of a table of two columns, or None."""
        rows, column = [], None
        for line in lines:
            if not line:
                continue
            found = re.fullmatch(r"(\S+(?: \S+)*) {2,}(\S+(?: \S+)*)", line)
            tight = column and line[0] != " " and line[column - 1:column] == " " and line[column:column + 1].strip()
            if tight and not found:
                rows.append((line[:column].strip(), [line[column:]]))
                continue
            if found and column in (None, found.start(2)):
                column = found.start(2)
                rows.append((found[1], [found[2]]))
            elif column and line[:column].strip() == "" and "  " not in line.strip():
                rows[-1][1].append(line)
            else:
                return None
        return rows if len(rows) > 1 else None

    def body(self, lines):
        """A whole comment, without its marks."""
        out, at = [], 0
        while at < len(lines):
            if not lines[at].strip():
                out.append("")
                at += 1
                continue
            end = at
            deep = lines[at].startswith("  ") or lines[at].startswith(" -")
            if re.match(r"\d+\. ", lines[at]):
                while end < len(lines) and re.match(r"\d+\. |   ", lines[end]):
                    end += 1
                items = re.split(r"\n(?=\d+\. )", "\n".join(lines[at:end]))
                out.append("\n".join("-# " + self.paragraph(item.split(". ", 1)[1].split("\n")) for item in items))
            elif deep:
                while end < len(lines) and (not lines[end].strip() or lines[end].startswith(" ")):
                    end += 1
                while not lines[end - 1].strip():
                    end -= 1
                blocks = re.split(r"\n\s*\n", "\n".join(lines[at:end]))
                whole = self.rows([line[2:] for line in lines[at:end]])
                if whole or any("    " in block.strip() for block in blocks[1:]) and "- " not in blocks[0][:4]:
                    blocks = ["\n".join(lines[at:end])]
                out.append("\n\n".join(self.indented(block.split("\n")) for block in blocks))
            else:
                while end < len(lines) and lines[end].strip() and not lines[end].startswith("  "):
                    end += 1
                out.append(self.paragraph(lines[at:end]))
            at = end
        return "\n".join(out).strip("\n")


def stripped(comment):
    """The lines of a comment, without its marks."""
    inner = re.sub(r"^/\*+<?|\*/$", "", comment.strip())
    return [re.sub(r"^\s*\* ?", "", line) if i else line.lstrip() for i, line in enumerate(inner.split("\n"))]


def documented(text, trailing=False):
    text = text.replace("*/", "*&zwj;/")
    return f"/**< {text} */" if trailing else f"/**\n{text}\n*/"


def sentences(text):
    """Enumerators that a function of this header puts in words."""
    cases = re.findall(r"case (PPL_\w+):\s*return ((?:\"[^\"]*\"\s*)+);", text)
    return {name: "".join(re.findall(r"\"([^\"]*)\"", words)) for name, words in cases}


def whole_comment(lines, at):
    end = at
    while "*/" not in lines[end]:
        end += 1
    return "\n".join(lines[at:end + 1]), end + 1


def filtered(path):
    source = source_of(path)
    write = Text(names_of(path))
    said = sentences(source)
    # Macros that the header takes back, its guard, and what compilers alone need.
    hidden = {"PPL_API", *re.findall(r"^#undef (\w+)", source, re.M),
              *re.findall(r"^#ifndef (PPL\w*_H)\b", source, re.M), *re.findall(r"\bPPL_HELPER_\w+", source)}
    lines, out, at, groups, inside, pending = source.split("\n"), [], 0, 0, False, None
    stem = path.name.replace(".", "_")
    while at < len(lines):
        line = lines[at]
        if found := re.match(r"#define (\w+)", line):
            end = at
            while lines[end].endswith("\\"):
                end += 1
            if found[1] not in hidden:
                if pending:
                    out.append(documented(pending))
                out.extend(lines[at:end + 1])
            at = end + 1
            continue
        if not line.strip():
            pending = None
        if line.startswith("/*"):
            comment, at = whole_comment(lines, at)
            body = stripped(comment)
            title = re.match(r"-{4} (.*?) -*\s*$", body[0])
            if not groups:
                first = write.body(body)
                brief = re.split(r"(?<=[.?])\s", re.sub("^ppl: ", "", " ".join(body)), maxsplit=1)[0]
                name = write.plain(brief[0].lower() + brief[1:].rstrip("."), links=False)
                out.append(f"/** \\file\n{first}\n*/\n/** \\defgroup {stem} {path.name}: {name}\n"
                           f"All that it holds for every call: {path.name}.\n\\{{ */")
                groups = 1
            elif title:
                if groups == 2:
                    out.append("/** \\} */")
                groups = 2
                slug = stem + "_" + re.sub(r"\W+", "_", title[1].lower()).strip("_")
                name = write.plain(title[1], links=False)
                out.append(f"/** \\defgroup {slug} {name[0].upper() + name[1:]}\n{write.body(body[1:])}\n\\{{ */")
                pending = None
            else:
                pending = write.body(body)
            continue
        if re.match(r"(typedef )?(struct|enum)\b[^;]*\{", line) or line == "enum {":
            inside = True
        if line.startswith("#ifdef __cplusplus") and "}" in lines[at + 1] and groups:
            out.extend(["/** \\} */"] * groups)
            groups = 0
        function = re.match(r"(?:PPL_API|PPL_HELPER_INLINE|PPL_HELPER_TABLE|static inline)\b", line)
        if function or re.match(r"(typedef )?(struct|enum)\b", line):
            declared = re.match(r"[^;{}]*?(\w+)\(", "\n".join(lines[at:at + 3]), re.S)
            text = pending or (declared and function and said_by_name(declared[1]))
            if text:
                out.append(documented(text))
        if inside:
            at = members(lines, at, out, write, said)
            inside, pending = False, pending if path.name == "ppl.h" else None
            continue
        out.append(line)
        if function and "{" in "".join(lines[at:at + 4]).split(";")[0]:
            pending = None
        at += 1
    if groups:
        out.extend(["/** \\} */"] * groups)
    return "\n".join(out)


def members(lines, at, out, write, said):
    """A structure or enumeration from its first line to its last; where it ends."""
    end = at
    while "}" not in lines[end]:
        end += 1
    text = "\n".join(lines[at:end + 1])
    # Of several members in one declaration each has its own, with the comment that stands behind or above.
    text = re.sub(r"^(?P<above> +/\*(?:(?!\*/).)*\*/\n)?(?P<type>  [a-z]\w*) (?P<names>[^;(/]+);"
                  r"(?P<behind> */\*.*?\*/)?$", apart, text, flags=re.M | re.S)

    def own(found):
        body = write.body(stripped(found[2]))
        line_before = text[text.rfind("\n", 0, found.start(2)) + 1:found.start(2)]
        trailing = line_before.strip() != "" or found[2].startswith("/**<")
        return found[1] + documented(body.replace("\n", " "), trailing)
    text = re.sub(r"()(/\*.*?\*/)", own, text, flags=re.S)
    if said and "enum" in text.split("{")[0]:
        text = re.sub(r"\b(PPL_\w+)( = \d+)?,\n",
                      lambda m: f"{m[0][:-1]} {documented(write.plain(said[m[1]]), True)}\n" if m[1] in said else m[0],
                      text)
    out.append(text)
    return end + 1


def apart(found):
    if "," not in found["names"]:
        return found[0]
    return "\n".join(f"{found['above'] or ''}{found['type']} {name.strip()};{found['behind'] or ''}"
                     for name in found["names"].split(","))


def filtered_cpp(path):
    """A C++ header has its documentation in place; the comment at its top is the file's."""
    lines = path.read_text().split("\n")
    end = next(i for i, line in enumerate(lines) if not line.startswith("//"))
    write = Text(names_of(path))
    body = [re.sub(r"^// ?", "", line) for line in lines[:end]]
    head = f"/** \\file\n{write.body(body)}\n*/"
    for i in range(end, len(lines)):
        if found := re.match(r"(\s*///<? (?:@[{}] ?)?)(.*)", lines[i]):
            lines[i] = found[1] + write.plain(found[2])
        elif found := re.match(r"(.*///< )(.*)", lines[i]):
            lines[i] = found[1] + write.plain(found[2])
    return "\n".join([head, *lines[end:]])


if __name__ == "__main__":
    header = pathlib.Path(sys.argv[1])
    print(filtered_cpp(header) if header.suffix == ".hpp" else filtered(header))
