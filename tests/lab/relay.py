"""A cable with a will of its own: passes what comes between two network devices, late or not at all,
and cuts connections. Runs in the switch's network; told what to do on its standard input:

    delay SECONDS JITTER    from now on everything takes so long, give or take
    stall                   nothing passes any more; what comes is kept
    go                      what was kept passes, and everything after it
    lose SHARE              so much of what comes is lost, 0 to 1
    reset COUNT             the next COUNT connections that carry data are reset, both ways
"""

import heapq
import os
import random
import select
import socket
import struct
import sys
import time

ETHERNET, MOST_KEPT = 14, 20_000
PROTOCOL_TCP, ACK, RST = 6, 0x10, 0x04


def opened(device):
    end = socket.socket(socket.AF_PACKET, socket.SOCK_RAW, socket.ntohs(3))
    end.bind((device, 0))
    end.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, 8 << 20)
    return end


def checksum(data):
    total = sum(struct.unpack(f"!{(len(data) + 1) // 2}H", data + b"\0" * (len(data) % 2)))
    while total >> 16:
        total = (total & 0xffff) + (total >> 16)
    return ~total & 0xffff


class Segment:
    """A TCP segment with data in an Ethernet frame; `payload` is None for any other frame."""

    def __init__(self, frame):
        self.payload = None
        if len(frame) < ETHERNET + 40 or frame[12:14] != b"\x08\0":
            return
        header = (frame[ETHERNET] & 15) * 4
        if frame[ETHERNET + 9] != PROTOCOL_TCP:
            return
        self.ethernet = frame[:ETHERNET]
        self.source, self.target = frame[ETHERNET + 12:ETHERNET + 16], frame[ETHERNET + 16:ETHERNET + 20]
        tcp = frame[ETHERNET + header:ETHERNET + struct.unpack("!H", frame[ETHERNET + 2:ETHERNET + 4])[0]]
        self.ports = struct.unpack("!HH", tcp[:4])
        self.number, self.acknowledged = struct.unpack("!II", tcp[4:12])
        self.payload = tcp[(tcp[12] >> 4) * 4:]

    def connection(self):
        return frozenset([(self.source, self.ports[0]), (self.target, self.ports[1])])

    def resets(self):
        """The frames that end this connection: for the receiver, and for the sender."""
        ahead = self._reset(self.ethernet, self.source, self.target, self.ports,
                            self.number, self.acknowledged)
        back = self._reset(self.ethernet[6:12] + self.ethernet[:6] + self.ethernet[12:], self.target,
                           self.source, self.ports[::-1], self.acknowledged,
                           self.number + len(self.payload))
        return ahead, back

    @staticmethod
    def _reset(ethernet, source, target, ports, number, acknowledged):
        tcp = struct.pack("!HHIIBBHHH", *ports, number & 0xffffffff, acknowledged & 0xffffffff,
                          5 << 4, RST | ACK, 0, 0, 0)
        pseudo = source + target + struct.pack("!BBH", 0, PROTOCOL_TCP, len(tcp))
        tcp = tcp[:16] + struct.pack("!H", checksum(pseudo + tcp)) + tcp[18:]
        ip = struct.pack("!BBHHHBBH4s4s", 0x45, 0, 20 + len(tcp), 0, 0, 64, PROTOCOL_TCP, 0, source, target)
        return ethernet + ip[:10] + struct.pack("!H", checksum(ip)) + ip[12:] + tcp


class Relay:
    def __init__(self, first, second):
        self.ends = (opened(first), opened(second))
        self.waiting = []  # (when, order, end, frame)
        self.order = 0
        self.delay = self.jitter = self.loss = 0.0
        self.stalled = False
        self.resets = 0
        self.cut = set()

    def command(self, line):
        word, *values = line.split()
        if word == "delay":
            self.delay, self.jitter = map(float, values)
        elif word == "lose":
            self.loss = float(values[0])
        elif word == "reset":
            self.resets, self.cut = int(values[0]), set()
        else:
            self.stalled = word == "stall"
        print(f"{word} done", flush=True)

    def take(self, end, frame):
        if random.random() < self.loss or len(self.waiting) > MOST_KEPT:
            return
        if self.resets:
            segment = Segment(frame)
            if segment.payload and segment.connection() not in self.cut:
                self.cut.add(segment.connection())
                self.resets -= 1
                ahead, back = segment.resets()
                self.send(1 - end, ahead)
                self.send(end, back)
                print("reset a connection", flush=True)
                return
        self.order += 1
        due = time.monotonic() + self.delay + random.uniform(-self.jitter, self.jitter)
        heapq.heappush(self.waiting, (due, self.order, 1 - end, frame))

    def send(self, end, frame):
        try:
            self.ends[end].send(frame)
        except OSError as error:  # a frame that the device does not take is a lost one
            print(f"lost {len(frame)} bytes: {error}", flush=True)

    def run(self):
        while True:
            pause = max(0, self.waiting[0][0] - time.monotonic()) if self.waiting else None
            ready, _, _ = select.select([*self.ends, sys.stdin], [], [],
                                        None if self.stalled else pause)
            for source in ready:
                if source is sys.stdin:
                    lines = os.read(0, 1 << 12).decode()  # whole ones: they are short
                    if not lines:
                        return
                    for line in lines.splitlines():
                        self.command(line)
                    continue
                frame, address = source.recvfrom(1 << 17)
                if address[2] != socket.PACKET_OUTGOING:
                    self.take(self.ends.index(source), frame)
            while not self.stalled and self.waiting and self.waiting[0][0] <= time.monotonic():
                _, _, end, frame = heapq.heappop(self.waiting)
                self.send(end, frame)


if __name__ == "__main__":
    print("up", flush=True)
    Relay(*sys.argv[1:3]).run()
