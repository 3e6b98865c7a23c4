#!/usr/bin/env python3
"""Replays files of call records on the workers of a Dask cluster.

    replay_on_dask.py SCHEDULER [REPLAY-OPTION...] -- CALLS...

Each worker replays files with "callrecordingctl replay --partial", and "--merge" adds up what they counted,
in the order of the files: the report is the one that a single replay of all files would print. A worker that
dies costs the work on its files, which others do again; a file that cannot be read ends it all with the
message of the client. Workers need callrecordingctl, the files and the rule file under the same names.
--html, --json and --strict are for the report, all other options for the workers.
"""
import subprocess
import sys
import tempfile

from distributed import Client

CLIENT = 'callrecordingctl'


def counted(options, path):
    """What one file comes to, as --partial prints it."""
    # One thread: the scheduler shares files out to as many as there are processors.
    run = subprocess.run([CLIENT, 'replay', '--partial', '--jobs', '1', *options, path],
                         capture_output=True)
    return run.stdout, run.stderr.decode(errors='replace'), run.returncode


def split(options):
    """Those for the workers, and those for the report."""
    workers, report = [], []
    options = iter(options)
    for option in options:
        if option == '--html':
            report += [option, next(options, '')]
        elif option in ('--json', '--strict') or option.startswith('--html='):
            report.append(option)
        else:
            workers.append(option)
    return workers, report


def main():
    if '--' not in sys.argv[2:]:
        sys.exit(__doc__)
    scheduler, *options = sys.argv[1:sys.argv.index('--')]
    paths = sys.argv[sys.argv.index('--') + 1:]
    for_workers, for_report = split(options)
    with Client(scheduler) as client, tempfile.NamedTemporaryFile() as parts:
        # A worker that is killed is no reason to doubt the files it had.
        futures = client.map(counted, [for_workers] * len(paths), paths, pure=False, retries=3)
        for future in futures:
            state, message, status = future.result()
            if status != 0:
                sys.exit(message.rstrip('\n') or f'{CLIENT}: ended with status {status}')
            sys.stderr.write(message)
            parts.write(state)
        parts.flush()
        sys.exit(subprocess.run([CLIENT, 'replay', '--merge', parts.name, *for_report]).returncode)


if __name__ == '__main__':
    main()
