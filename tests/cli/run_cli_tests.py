#!/usr/bin/env python3
"""Runs the yarvbook CLI on the files in data/ and checks what it does.

    run_cli_tests.py YARVBOOK DATA_DIR [--group NAME]

Each case gives the arguments ({data} is DATA_DIR, {tmp} a scratch folder), the exit
code, and optionally the exact stdout (bytes, or a file in DATA_DIR), texts stderr must contain,
and files the run must write with their exact contents.  Prints one line per failure
and exits 1 when any case fails.
"""
import argparse
import os
import subprocess
import sys
import tempfile


def case(group, name, args, code=0, stdout=None, stderr=(), files=(), no_stderr=False):
    return dict(group=group, name=name, args=args, code=code, stdout=stdout,
                stderr=stderr, files=files, no_stderr=no_stderr)


CASES = [
    # ---- calc: reading and writing CSV --------------------------------------
    case('calc', 'quoting, CRLF, BOM and ragged rows keep their shape',
         ['calc', '{data}/shapes.csv', '--raw'], stdout='shapes.raw.csv', no_stderr=True),
    case('calc', 'values typed in English notation, raw output',
         ['calc', '{data}/numbers.csv', '--raw'], stdout='numbers.raw.csv', no_stderr=True),
    case('calc', '-o writes the file and nothing to stdout',
         ['calc', '{data}/numbers.csv', '--raw', '-o', '{tmp}/out.csv'], stdout='empty.txt',
         files=[('out.csv', 'numbers.raw.csv')]),
    case('calc', '--outdir writes one file per input, named by stem',
         ['calc', '{data}/numbers.csv', '{data}/shapes.csv', '--raw', '--outdir', '{tmp}'],
         files=[('numbers.csv', 'numbers.raw.csv'), ('shapes.csv', 'shapes.raw.csv')]),
    case('calc', 'display text through the cells\' number formats',
         ['calc', '{data}/numbers.csv'], stdout='numbers.shown.csv', no_stderr=True),
    case('calc', 'display text in another locale; input stays English',
         ['calc', '{data}/numbers.csv', '--locale', 'de-DE'], stdout='numbers.de.csv'),

    # ---- calc: formulas ---------------------------------------------------------
    case('calc', 'formulas computed; those that do not parse kept as text, with warnings',
         ['calc', '{data}/formulas.csv', '--raw'], stdout='formulas.raw.csv',
         stderr=['formulas.csv: A2: the formula does not parse: error 1 (unexpected character)'
                 ' at character 4; kept as text',
                 'formulas.csv: B2: the formula does not parse: error 2 (missing ")") at '
                 'character 7',
                 'formulas.csv: C2: the formula does not parse: error 5 ',
                 'formulas.csv: D2: the formula does not parse: error 3 (not a function) at '
                 'character 2']),
    case('calc', '--manual writes the stored values: formulas not computed',
         ['calc', '{data}/formulas.csv', '--manual'], stdout='formulas.manual.csv'),
    case('calc', 'formulas refer to other inputs by their stems',
         ['calc', '{data}/book/orders.csv', '{data}/book/rates.csv', '--outdir', '{tmp}'],
         no_stderr=True,
         files=[('orders.csv', 'book/orders.out.csv'), ('rates.csv', 'book/rates.out.csv')]),
    case('calc', 'circular references without iteration become 0',
         ['calc', '{data}/circular.csv', '--raw'], stdout='circular.raw.csv',
         stderr=['warning: circular references; their cells are 0']),
    case('calc', '--iterate: a diverging cycle stops at the pass limit, a converging one settles',
         ['calc', '{data}/circular.csv', '--raw', '--iterate', '100,0.001'],
         stdout=b'199,200\n1.3333333333333333,1.3333333333333333\n'),
    case('calc', '--iterate with one pass computes each cell once',
         ['calc', '{data}/circular.csv', '--raw', '--iterate', '1,0.001'], stdout=b'1,2\n1,1\n'),
    case('calc', 'the example workbook',
         ['calc', '{data}/../../../examples/budget.csv'], stdout='budget.out.csv',
         no_stderr=True),

    # ---- calc: malformed input stops with file and line (CsvTest covers each fault) --
    case('calc', 'quote left open', ['calc', '{data}/unterminated.csv'], code=1,
         stderr=['unterminated.csv:2: quoted field not closed'], stdout='empty.txt'),
    case('calc', 'a malformed second input writes nothing',
         ['calc', '{data}/numbers.csv', '{data}/bad_utf8.csv', '--outdir', '{tmp}'], code=1,
         stderr=['bad_utf8.csv:2: invalid UTF-8'], files=[('numbers.csv', None)]),
    case('calc', 'two inputs with one sheet name',
         ['calc', '{data}/numbers.csv', '{tmp}/NUMBERS.csv', '--outdir', '{tmp}'], code=1,
         stderr=["already gives the sheet name 'NUMBERS'"]),

    # ---- calc: usage ------------------------------------------------------------
    case('calc', 'no input', ['calc', '--raw'], code=2, stderr=['no input file']),
    case('calc', 'several inputs without --outdir',
         ['calc', '{data}/numbers.csv', '{data}/shapes.csv'], code=2,
         stderr=['several inputs need --outdir']),
    case('calc', 'unknown option', ['calc', '{data}/numbers.csv', '--fast'], code=2,
         stderr=["unknown or incomplete option '--fast'"]),
    case('calc', '--iterate without a change', ['calc', '{data}/numbers.csv', '--iterate', '100'],
         code=2, stderr=['--iterate wants MAXPASSES,MAXCHANGE']),
    case('calc', '--iterate with a negative change',
         ['calc', '{data}/numbers.csv', '--iterate', '5,-1'], code=2,
         stderr=['--iterate wants MAXPASSES,MAXCHANGE']),

    # ---- eval ---------------------------------------------------------------------
    case('eval', 'display text', ['eval', '=1/3'], stdout=b'0.333333333333333\n'),
    case('eval', 'raw shortest form', ['eval', '--raw', '=1/3'], stdout=b'0.3333333333333333\n'),
    case('eval', 'raw plain digits below 1e15', ['eval', '--raw', '=2^50'],
         stdout=b'1125899906842624\n'),
    case('eval', 'raw exponent from 1e15', ['eval', '--raw', '=-1E+15'], stdout=b'-1e+15\n'),
    case('eval', 'the "=" may be left out', ['eval', '1+2*3'], stdout=b'7\n'),
    case('eval', 'an unknown name is #NAME?, not a parse fault', ['eval', '=foo+1'],
         stdout=b'#NAME?\n'),
    case('eval', 'display in another locale', ['eval', '--locale', 'de-DE', '=1/4'],
         stdout=b'0,25\n'),
    case('eval', 'logicals: local in display, English raw',
         ['eval', '--locale', 'de-DE', '=AND(TRUE,1)'], stdout=b'WAHR\n'),
    case('eval', 'no formula', ['eval'], code=2, stderr=['usage: yarvbook eval']),
    case('eval', 'unknown function: code, position and caret',
         ['eval', '=NOSUCH(1)'], code=1,
         stderr=['error 3 (not a function) at character 2\n=NOSUCH(1)\n ^\n']),
    case('eval', 'missing parenthesis', ['eval', '=(1+2'], code=1,
         stderr=['error 2 (missing ")") at character 6\n=(1+2\n     ^\n']),
    case('eval', 'position counted in the text as given, without "="',
         ['eval', '(1+2'], code=1, stderr=['at character 5\n(1+2\n    ^\n']),
    case('eval', 'caret after a character beyond U+FFFF',
         ['eval', '="\U0001F600'], code=1,
         stderr=['error 5 (string without its closing quote) at character 2\n']),
]


def expand(arg, data, tmp):
    return arg.replace('{data}', data).replace('{tmp}', tmp)


def read(path):
    with open(path, 'rb') as fh:
        return fh.read()


def run_case(binary, data, c):
    """Returns a list of problems (empty when the case passes)."""
    problems = []
    with tempfile.TemporaryDirectory(prefix='yb_cli_') as tmp:
        with open(os.path.join(tmp, 'NUMBERS.csv'), 'w', newline='') as fh:
            fh.write('1\n')
        args = [expand(a, data, tmp) for a in c['args']]
        p = subprocess.run([binary] + args, stdout=subprocess.PIPE, stderr=subprocess.PIPE,
                           timeout=120, check=False)
        err = p.stderr.decode('utf-8', 'replace')
        if p.returncode != c['code']:
            problems.append('exit %d, expected %d' % (p.returncode, c['code']))
        if c['stdout'] is not None:
            want = c['stdout'] if isinstance(c['stdout'], bytes) else \
                read(os.path.join(data, c['stdout']))
            if p.stdout != want:
                problems.append('stdout %r\n      expected %r' % (p.stdout, want))
        for text in c['stderr']:
            if text not in err:
                problems.append('stderr lacks %r' % text)
        if c['no_stderr'] and err:
            problems.append('unexpected stderr %r' % err)
        for name, expected in c['files']:
            path = os.path.join(tmp, name)
            if expected is None:
                if os.path.exists(path):
                    problems.append('%s written' % name)
            elif not os.path.exists(path):
                problems.append('%s not written' % name)
            elif read(path) != read(os.path.join(data, expected)):
                problems.append('%s differs from %s' % (name, expected))
        if problems and err:
            problems.append('stderr was %r' % err)
    return problems


def main():
    ap = argparse.ArgumentParser()
    ap.add_argument('binary')
    ap.add_argument('data')
    ap.add_argument('--group')
    args = ap.parse_args()
    failed = 0
    ran = 0
    for c in CASES:
        if args.group and c['group'] != args.group:
            continue
        ran += 1
        problems = run_case(args.binary, args.data, c)
        if problems:
            failed += 1
            print('FAIL %s: %s' % (c['group'], c['name']))
            for p in problems:
                print('      ' + p)
    print('%d of %d cases pass' % (ran - failed, ran))
    return 1 if failed or ran == 0 else 0


if __name__ == '__main__':
    sys.exit(main())
