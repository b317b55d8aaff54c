#!/usr/bin/env python3
"""Coverage of each test case alone, and which tests add nothing to their layer's coverage.

    coverage-per-test.py collect BUILD_DIR OUT_DIR   run each case of BUILD_DIR's test
                                                     executables alone (BUILD_DIR is a coverage
                                                     build, as `make coverage` makes) and keep
                                                     the lines and branches of the code it reaches
    coverage-per-test.py report OUT_DIR [KEEP_RE]    list the tests that can go with no line or
                                                     branch of their own layer's code unreached,
                                                     largest first; tests whose name matches
                                                     KEEP_RE stay

A case's counters go to a directory of its own (GCOV_PREFIX), so that cases run side by side.
"Their own layer" is the code a test directory tests: a test of tests/rtl may go only when other
tests of tests/rtl reach what it reaches in rtl/, whatever the layers above reach. Tests are
taken largest first, and each one listed is taken out of the counts before the next is weighed.
"""
import collections
import concurrent.futures
import glob
import json
import os
import re
import shutil
import subprocess
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
ADDIN = ('host/', 'experts/', 'locale/')
LAYERS = {'rtl': ('rtl/',), 'foundation': ('foundation/',), 'persistence': ('persistence/',),
          'specification': ('specification/',), 'toolsapi': ('toolsapi/',), 'host': ADDIN,
          'addin': ADDIN, 'addin_gui': ADDIN, 'editor_gui': ('editor/',),
          'workbench': ('workbench/',), 'workbench_gui': ('workbench/',),
          'designer': ('workbench/',), 'packages': ('workbench/',)}
CODE = tuple(sorted({d for dirs in LAYERS.values() for d in dirs}))


def test_env(build):
    return dict(os.environ, QT_QPA_PLATFORM='offscreen', ZELVANE_SOURCE_DIR=ROOT,
                ZELVANE_BINARY_DIR=os.path.join(build, 'tests'))


def cases(build, exe):
    listing = os.path.join(build, os.path.basename(exe) + '.list.json')
    subprocess.run([exe, '--gtest_list_tests', '--gtest_output=json:' + listing],
                   capture_output=True, cwd=os.path.join(build, 'tests'), env=test_env(build))
    for suite in json.load(open(listing))['testsuites']:
        for t in suite['testsuite']:
            # gtest gives the file as the compiler saw it; the part from tests/ on is ours.
            path = t['file']
            yield {'exe': exe, 'name': suite['name'] + '.' + t['name'],
                   'file': path[path.index('tests/'):], 'line': t['line']}


def reached_by(gcdas, cwd):
    """The lines and branches of the code that the counters in `gcdas` saw run."""
    reached = set()
    if not gcdas:
        return reached
    gcov = subprocess.run(['gcov', '--json-format', '--stdout', '--branch-probabilities'] + gcdas,
                          capture_output=True, text=True, cwd=cwd)
    for doc in filter(str.strip, gcov.stdout.splitlines()):
        data = json.loads(doc)
        for f in data['files']:
            src = os.path.normpath(os.path.join(data.get('current_working_directory', ''),
                                                f['file']))
            rel = os.path.relpath(src, ROOT)
            if not rel.startswith(CODE):
                continue
            for line in f['lines']:
                if line['count'] > 0:
                    reached.add(f"{rel}:{line['line_number']}")
                for i, branch in enumerate(line.get('branches', [])):
                    if branch['count'] > 0 and not branch.get('throw'):
                        reached.add(f"{rel}:{line['line_number']}:{i}")
    return reached


def collect_one(build, gcnos, out, case):
    result = os.path.join(out, 'cases', f"{case['id']}.json")
    if os.path.exists(result):
        return
    prefix = os.path.join(out, 'raw', str(case['id']))
    shutil.rmtree(prefix, ignore_errors=True)
    env = dict(test_env(build), GCOV_PREFIX=prefix, GCOV_PREFIX_STRIP='0')
    run = subprocess.run([case['exe'], '--gtest_filter=' + case['name']], capture_output=True,
                         cwd=os.path.join(build, 'tests'), env=env, timeout=600)
    gcdas = []
    for gcno in gcnos:
        gcda = prefix + gcno[:-len('.gcno')] + '.gcda'
        if os.path.exists(gcda):
            os.symlink(gcno, gcda[:-len('.gcda')] + '.gcno')
            gcdas.append(gcda)
    reached = reached_by(gcdas, prefix)
    json.dump({'passed': run.returncode == 0, 'reached': sorted(reached)}, open(result, 'w'))
    shutil.rmtree(prefix, ignore_errors=True)


def collect(build, out):
    build, out = os.path.abspath(build), os.path.abspath(out)
    os.makedirs(os.path.join(out, 'cases'), exist_ok=True)
    gcnos = [g for g in glob.glob(build + '/**/*.gcno', recursive=True) if '/tests/' not in g]
    index = []
    for exe in sorted(glob.glob(os.path.join(build, 'tests', '*_tests'))):
        index += cases(build, exe)
    for i, case in enumerate(index):
        case['id'] = i
    json.dump(index, open(os.path.join(out, 'index.json'), 'w'))
    jobs = int(os.environ.get('JOBS', os.cpu_count() or 1))
    with concurrent.futures.ThreadPoolExecutor(jobs) as pool:
        list(pool.map(lambda c: collect_one(build, gcnos, out, c), index))
    print(f'{len(index)} cases in {out}')


def body_lines(lines, start):
    """The non-blank, non-comment lines of the test whose macro is on line `start` (1-based),
    up to the brace that closes its body; braces in strings and comments do not count."""
    text = '\n'.join(lines[start - 1:])
    depth, pos, quote = 0, 0, None
    while pos < len(text):
        c = text[pos]
        if quote:
            pos += 2 if c == '\\' else 1
            quote = None if c == quote else quote
            continue
        if text.startswith('//', pos):
            end = text.find('\n', pos)
            pos = len(text) if end < 0 else end
            continue
        if text.startswith('R"', pos):
            opening = text.index('(', pos)
            pos = text.index(')' + text[pos + 2:opening] + '"', opening) + 1
            continue
        if c in '"\'':
            quote = c
        elif c == '{':
            depth += 1
        elif c == '}':
            depth -= 1
            if depth == 0:
                body = text[:pos].split('\n')
                return sum(1 for s in body if s.strip() and not s.strip().startswith('//'))
        pos += 1
    return 0


def report(out, keep):
    tests = collections.defaultdict(lambda: {'names': [], 'reached': set(), 'passed': True})
    for case in json.load(open(os.path.join(out, 'index.json'))):
        data = json.load(open(os.path.join(out, 'cases', f"{case['id']}.json")))
        t = tests[(case['file'], case['line'])]
        t['names'].append(case['name'])
        t['passed'] &= data['passed']
        t['reached'] |= set(data['reached'])
    sources = {}
    for (path, line), t in tests.items():
        t['layer'] = path.split('/')[1]
        t['own'] = {r for r in t['reached'] if r.startswith(LAYERS.get(t['layer'], ()))}
        lines = sources.setdefault(path, open(os.path.join(ROOT, path)).read().split('\n'))
        t['size'] = body_lines(lines, line)
    everywhere = collections.Counter(r for t in tests.values() for r in t['reached'])
    in_layer = collections.Counter((t['layer'], r) for t in tests.values() for r in t['own'])
    keep = re.compile(keep) if keep else None
    total = 0
    for key in sorted(tests, key=lambda k: -tests[k]['size']):
        t = tests[key]
        if not t['passed'] or not t['size'] or t['layer'] not in LAYERS:
            continue
        if keep and any(keep.search(n) for n in t['names']):
            continue
        if all(everywhere[r] > 1 for r in t['reached']) and \
           all(in_layer[(t['layer'], r)] > 1 for r in t['own']):
            everywhere.subtract(t['reached'])
            in_layer.subtract((t['layer'], r) for r in t['own'])
            total += t['size']
            print(f"{t['size']:4d}  {key[0]}:{key[1]}  {t['names'][0]}")
    print(f"{total} lines of tests add nothing to their layer's coverage")


if __name__ == '__main__':
    if len(sys.argv) >= 4 and sys.argv[1] == 'collect':
        collect(sys.argv[2], sys.argv[3])
    elif len(sys.argv) >= 3 and sys.argv[1] == 'report':
        report(sys.argv[2], sys.argv[3] if len(sys.argv) > 3 else None)
    else:
        sys.exit(__doc__)
