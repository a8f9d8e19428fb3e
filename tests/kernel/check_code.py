#!/usr/bin/env python3
"""Checks the instructions of a kernel image.

usage: check_code.py ppl.sys

Every instruction of the image must be one of those listed here. What is not listed is what a driver must not
execute or the library promises not to: x87 and MMX (forbidden in 64-bit kernel code), AVX (its registers are not
saved), privileged instructions, a changed direction flag, and floating-point arithmetic, conversion and comparison.
Moves, shuffles and logic of XMM registers are no arithmetic, whatever type their mnemonics name. What goes beyond
SSE2 may stand in the functions of the sse41 level alone.
"""

import re
import sys

from code_map import CodeMap
from pe_image import Image

CONDITION = "(?:a|ae|b|be|c|e|g|ge|l|le|na|nae|nb|nbe|nc|ne|ng|nge|nl|nle|no|np|ns|nz|o|p|pe|po|s|z)"
INTEGER = re.compile(
    rf"""(?:mov(?:abs)?[bwlq]?|mov[sz][bwl][wlq]|lea[lwq]?|(?:add|sub|adc|sbb|and|or|xor|not|neg|inc|dec|cmp|test)[bwlq]?
    |(?:i?mul|i?div|sh[lr]d?|s[ah]l|sar|ro[lr]|rc[lr])[bwlq]?|bt[src]?[bwlq]?|bs[fr][lq]?|bswap[lq]?|xchg[bwlq]?
    |push[q]?|pop[q]?|call[q]?|jmp[q]?|j{CONDITION}|set{CONDITION}|cmov{CONDITION}[wlq]?|ret[q]?|leave[q]?
    |c[bwl]t[wlq]|cqto|cltd|cwt[ld]|(?:rep\ )?(?:movs|stos)[bwlq]?|(?:data16\ |cs\ )*nop[wlq]?|jmp[q]?|pause
    |ud2|int3|cpuid|rdtsc)$""", re.VERBOSE)
SSE2 = re.compile(
    r"""(?:mov(?:dqa|dqu|d|q|aps|apd|ups|upd|ss|sd|hlps|lhps|hps|lps|hpd|lpd|mskps|mskpd|ntdq|ntps|ntpd|nti|ntil|ntiq)
    |shufp[sd]|unpck[lh]p[sd]|(?:and|andn|or|xor)p[sd]|prefetch(?:nta|t[012])|[slm]fence
    |padd(?:u?s)?[bw]|paddd|paddq|psub(?:u?s)?[bw]|psubd|psubq|pmul(?:lw|hw|huw|udq)|pmaddwd|pavg[bw]|psadbw
    |p(?:min|max)(?:ub|sw)|pcmp(?:eq|gt)[bwd]|p(?:and|andn|or|xor)|ps(?:ll|rl)[wdq]|psra[wd]|ps[lr]ldq
    |pack(?:sswb|ssdw|uswb)|punpck[lh](?:bw|wd|dq|qdq)|pshuf(?:d|hw|lw)|pmovmskb|p(?:extr|insr)w)$""", re.VERBOSE)
SSE41 = re.compile(
    r"""(?:pshufb|palignr|pabs[bwd]|psign[bwd]|ph(?:add|sub)(?:w|d|sw)|pmulhrsw|pmaddubsw
    |p(?:min|max)(?:sb|uw|sd|ud)|pmulld|pmuldq|packusdw|pmov[sz]x(?:bw|bd|bq|wd|wq|dq)|pcmpeqq|p(?:extr|insr)[bdq]
    |pblendw|pblendvb|blendp[sd]|blendvp[sd]|insertps|extractps|ptest|mpsadbw|phminposuw|movntdqa|lddqu)$""",
    re.VERBOSE)
FORBIDDEN_OPERAND = re.compile(r"%(?:[yz]mm\d+|mm[0-7]|st\b|k[0-7]\b|cr\d|dr\d|[fg]s:)")


def main():
    image = Image(sys.argv[1])
    code = CodeMap(image)
    bad, count, beyond = [], 0, 0
    if not code.lists_empty:
        bad.append("there are run-time constructors, which nobody would run")
    for function in code.functions:
        for i in function.instructions:
            count += 1
            if FORBIDDEN_OPERAND.search(i.operands):
                bad.append(f"{function.name}: forbidden register: {i}")
            elif INTEGER.match(i.name) or SSE2.match(i.name):
                continue
            elif SSE41.match(i.name):
                beyond += 1
                if "sse41" not in function.name:
                    bad.append(f"{function.name}: beyond SSE2, outside of the sse41 level: {i}")
            else:
                bad.append(f"{function.name}: forbidden instruction: {i}")
    for complaint in bad[:40]:
        print(f"{image.path}: {complaint}")
    print(f"{image.path}: {len(code.functions)} functions, {count} instructions, {beyond} of them beyond SSE2, "
          f"{len(bad)} forbidden")
    return 1 if bad or not count else 0


if __name__ == "__main__":
    sys.exit(main())
