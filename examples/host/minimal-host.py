#!/usr/bin/env python3
"""A minimal host application, with nothing but a mapped file and the byte map of the link.

It runs until SIGINT or SIGTERM. Python cannot compare and swap a shared word, so this host only
writes words while every client holds still: from the moment a request is notified until the enter
lock of the request condition is freed, no client can begin an exchange, and the one that waits for
its reply touches nothing before its time-out. A client that times out just then may meet a wrong
word; a host for daily work needs atomic operations. For want of them it also writes the heartbeat
without the directory's lock, which `tavarin check-host` names.
"""

import mmap
import os
import signal
import struct
import sys
import time

DIRECTORY = "/dev/shm/__KEL_TAN_INTERPROCESS_DIR6__"
HOST_ID = 1
MESSAGES = f"/dev/shm/TAN_Host_{HOST_ID}"

# Byte offsets in the message segment.
EXCHANGE_MUTEX = 8
REQUEST_ENTER, REQUEST_COMMAND, REQUEST_WAITERS = 12, 16, 20
REPLY_ENTER, REPLY_COMMAND, REPLY_WAITERS = 24, 28, 32
PENDING, CLOSED = 36, 37
CAPACITY_AT, BUFFER_AT, ERROR_AT = 40, 48, 52
ERROR, ERROR_SIZE = 64, 960
BUFFER, CAPACITY, SIZE = 1024, 16384, 65536

# Ticks of link time: microseconds since the Julian day 0, of which 1970 began on day 2,440,588.
EPOCH = 2440588 * 86_400_000_000

TRACK_LIST = """if(%s(true)) then
\tnTracks = GetTrackCount()
\tprint(nTracks+1)
\tprint(1)
\tfor nTrack = 0,nTracks-1 do
\t\tidTrack = GetTrackID(nTrack)
\t\tprint(GetTrackName(idTrack, true))
\tend
else
\tprint(1)
\tprint(0)
end
"""
TRACK_LISTS = [TRACK_LIST % name for name in ("SelectAudioSuiteDocument", "SelectScriptDocument")]


def link_time():
    return EPOCH + time.time_ns() // 1000


def make_segment(path, size):
    """A new segment, private to the user."""
    if os.path.exists(path):
        os.unlink(path)
    descriptor = os.open(path, os.O_RDWR | os.O_CREAT | os.O_EXCL, 0o600)
    os.ftruncate(descriptor, size)
    segment = mmap.mmap(descriptor, size)
    os.close(descriptor)
    return segment


class Words:
    """The 32-bit words of a segment by byte offset; each access is one load or one store."""

    def __init__(self, segment):
        self.view = memoryview(segment).cast("I")

    def __getitem__(self, offset):
        return self.view[offset // 4]

    def __setitem__(self, offset, value):
        self.view[offset // 4] = value


def another_host_runs():
    try:
        with open(DIRECTORY, "rb") as file:
            (heartbeat,) = struct.unpack_from("<q", file.read(20), 12)
    except (OSError, struct.error):
        return False
    return link_time() - heartbeat < 1_000_000


def answer(script):
    """Knows the track lists and scripts of prints. Your host has a script language here."""
    if script in TRACK_LISTS:
        return "4\n1\nGuide\nDub\nAligned\n", ""
    calls = {"print(GetUpdateCount())": "1", "print(GetProcessID())": str(os.getpid())}
    reply = ""
    while script := script.lstrip(" \n"):
        call = next((call for call in calls if script.startswith(call)), None)
        if call:
            reply += calls[call] + "\n"
            script = script[len(call):]
        elif script.startswith('print("') and '")' in script[7:]:
            text, script = script[7:].split('")', 1)
            reply += text + "\n"
        else:
            return reply, "this host does not know that script"
    return reply, ""


def write_text(segment, offset, size, text):
    data = text.encode("utf-8", "surrogateescape")[: size - 1] + b"\0"
    segment[offset : offset + len(data)] = data


def answer_request(segment, words):
    # The client frees the mutex when it waits for its reply.
    while words[EXCHANGE_MUTEX] or words[REPLY_ENTER] or not words[REPLY_WAITERS]:
        time.sleep(0)
    words[EXCHANGE_MUTEX] = 1
    request = segment[BUFFER : BUFFER + CAPACITY].split(b"\0", 1)[0]
    reply, error = answer(request.decode("utf-8", "surrogateescape"))
    write_text(segment, BUFFER, SIZE - BUFFER, reply)
    write_text(segment, ERROR, ERROR_SIZE, error)
    segment[PENDING] = 0
    # Waiting again: the one waiter stays counted, and the next client may come.
    words[REQUEST_COMMAND] = 0
    words[EXCHANGE_MUTEX] = 0
    words[REQUEST_ENTER] = 0
    # The woken client frees the enter lock of the reply.
    words[REPLY_ENTER] = 1
    words[REPLY_COMMAND] = 1


def main():
    if another_host_runs():
        sys.exit("another host is running")
    stop = []
    for number in (signal.SIGINT, signal.SIGTERM):
        signal.signal(number, lambda *_: stop.append(True))

    segment = make_segment(MESSAGES, SIZE)
    words = Words(segment)
    words[CAPACITY_AT], words[BUFFER_AT], words[ERROR_AT] = CAPACITY, BUFFER, ERROR
    words[REQUEST_WAITERS] = 1
    directory = make_segment(DIRECTORY, 20)
    struct.pack_into("<IIiq", directory, 0, 0, 1, HOST_ID, link_time())
    heartbeat = Words(directory)

    while not stop:
        if words[REQUEST_COMMAND]:
            answer_request(segment, words)
        else:
            time.sleep(0.0005)
        # The upper half changes once in 71 minutes: its writer then makes the clients see a wrong
        # time for less than a microsecond.
        now = link_time()
        heartbeat[12], heartbeat[16] = now & 0xFFFFFFFF, now >> 32
    segment[CLOSED] = 1
    os.unlink(DIRECTORY)
    os.unlink(MESSAGES)


if __name__ == "__main__":
    main()
