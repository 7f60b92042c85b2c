#!/usr/bin/env python3
"""Runs a command of QEMU's or Wine's as if it were the program that is emulated.

QEMU remarks on a signal itself, which is left out. Of a status on Windows Wine hands on the lowest byte: that of the
arithmetic fault, 0xC0000094, is taken for the signal.
"""

import os
import re
import signal
import subprocess
import sys

FAULT_ON_WINDOWS = 0x94

run = subprocess.run(sys.argv[1:], stderr=subprocess.PIPE)
sys.stderr.buffer.write(re.sub(rb"qemu: uncaught target signal .*\n", b"", run.stderr))
sys.stderr.flush()
ended = -signal.SIGFPE if run.returncode == FAULT_ON_WINDOWS else run.returncode
if ended < 0:
    os.kill(os.getpid(), -ended)
sys.exit(ended)
