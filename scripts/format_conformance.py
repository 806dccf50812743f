#!/usr/bin/env python3
"""Runs the TEXT(value, format) conformance cases through `yarvbook format`.

usage: scripts/format_conformance.py BUILD/cli/yarvbook CASES.tsv [--failures N]

Only cases whose value is a number, a number expression, a text or a logical
constant are run (cell references need a workbook). Prints the pass rate.
"""
import re
import subprocess
import sys


def tsv_unescape(s):
    """Undoes the TSV escapes of the case files (\\t, \\n, \\r, \\\\, \\xHH)."""
    def repl(m):
        x = m.group(1)
        if x.startswith('x'):
            return chr(int(x[1:], 16))
        return {'t': '\t', 'n': '\n', 'r': '\r', '\\': '\\'}[x]
    return re.sub(r'\\(x[0-9a-f]{2}|[tnr\\])', repl, s)


def split_args(inner):
    """Splits the TEXT arguments at the top-level comma."""
    depth, quoted = 0, False
    for i, c in enumerate(inner):
        if c == '"':
            quoted = not quoted
        elif not quoted and c == '(':
            depth += 1
        elif not quoted and c == ')':
            depth -= 1
        elif not quoted and depth == 0 and c == ',':
            return inner[:i], inner[i + 1:]
    return None


def string_literal(text):
    m = re.fullmatch(r'"((?:[^"]|"")*)"', text.strip())
    return m.group(1).replace('""', '"') if m else None


def value_argument(text):
    text = text.strip()
    s = string_literal(text)
    if s is not None:
        return 'text', s
    if text in ('TRUE', 'FALSE'):
        return 'text', text
    if re.fullmatch(r'[0-9.eE+\-*/() ]+', text):
        return 'number', repr(float(eval(text)))  # arithmetic on constants only
    return None, None


def main():
    exe, cases = sys.argv[1], sys.argv[2]
    show = int(sys.argv[sys.argv.index('--failures') + 1]) if '--failures' in sys.argv else 20
    passed = total = skipped = 0
    failures = []
    for line in open(cases, encoding='utf-8'):
        cols = [tsv_unescape(c) for c in line.rstrip('\n').split('\t')]
        if len(cols) < 8 or not cols[1].startswith('TEXT.'):
            continue
        m = re.fullmatch(r'=TEXT\((.*)\)', cols[2])
        args = split_args(m.group(1)) if m else None
        fmt = string_literal(args[1]) if args else None
        kind, value = value_argument(args[0]) if args else (None, None)
        if fmt is None or kind is None:
            skipped += 1
            continue
        total += 1
        if kind == 'text' and re.fullmatch(r'[-+0-9.eE]+', value):
            value = ' ' + value  # keep numeric-looking text as text
        run = subprocess.run([exe, 'format', fmt, value], capture_output=True, text=True)
        got = run.stdout[:-1] if run.stdout.endswith('\n') else run.stdout
        if run.returncode != 0:
            got = '<parse failure> ' + run.stderr.strip()
        if got == cols[7]:
            passed += 1
        else:
            failures.append((cols[0], cols[2], cols[7], got))
    for case in failures[:show]:
        print('FAIL %s %s\n  expected %r\n  got      %r' % case)
    print('format conformance: %.1f%% (%d/%d), %d skipped' %
          (100.0 * passed / max(total, 1), passed, total, skipped))


if __name__ == '__main__':
    main()
