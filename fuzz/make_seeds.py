#!/usr/bin/env python3
"""Writes the seed corpora of the fuzz targets (fuzz/corpus/<target>/).  Run it again after a
change of an input layout; libFuzzer grows its own corpus from these seeds."""
import hashlib
import os
import struct

HERE = os.path.dirname(os.path.abspath(__file__))
RSP = 4 + 2048  # reply area in the message text


def write(target, seeds):
    d = os.path.join(HERE, 'corpus', target)
    os.makedirs(d, exist_ok=True)
    for s in seeds:
        with open(os.path.join(d, hashlib.sha1(s).hexdigest()[:16]), 'wb') as f:
            f.write(s)


def inbound(cmd, payload=b''):
    return struct.pack('<I', cmd) + bytes(RSP - 4) + payload


line = struct.pack('<I', 1) + bytes(4) + b'5551234'.ljust(216, b'\0') + b'user'.ljust(66, b'\0') + b'secret'
server = bytes(44) + struct.pack('<I', 1) + b'sip.example.test'.ljust(70, b'\0') + struct.pack('<H', 5060)
write('fuzz_inbound', [inbound(3, struct.pack('<II', 1, 4)), inbound(12, struct.pack('<I', 1)), inbound(37),
                       inbound(16391, server), inbound(16395, server), inbound(16584, line),
                       inbound(16587, line), inbound(16584, b'\x02' + line[1:]), inbound(7)])

# protocol, handler index, flag, nLocate[4], value (4 bytes), one rewrite per reply
replies = []
for i, index in enumerate(range(0, 640, 23)):
    for flag in (0, 1):
        protocol = (i + flag) % 3
        value = struct.pack('<I', i % 3)
        rewrite = bytes([i % 8, 3, 0x41, 0x42, 0x43])
        replies.append(bytes([protocol]) + struct.pack('<H', index) + bytes([flag, 0, 1, 1, 0]) + value + rewrite)
write('fuzz_replies', replies)

def common(routine, *parts):
    return bytes([routine]) + b''.join(parts)

write('fuzz_common', [
    common(0, b'\x05', b'Hello', b'hELLo'), common(1, b'0aFf9z'), common(2, b'+86 (10) 555-1234'),
    common(3, b'0', struct.pack('<H', 12), b'\x01', b'42'), common(4, b'192.168.1.1'), common(4, b' 10. 0..1.2 '),
    common(5, b'a  b c'), common(6, struct.pack('<H', 64), b'v=0 \r\no=- 1  2\n\ns=x '),
    common(7, struct.pack('<hh', 1, 64), b'\x10', b'1~3,5,,7 ,9~8'), common(8, b'\x18', b'10.1.2.3'),
    common(8, b'\x40', b'fe80::1'), common(9, bytes([1] + [0] * 3 + [10, 0, 0, 1] + [0] * 12 + [24, 0, 0, 0]) * 2 + b'\x20'),
    common(10, struct.pack('<I', 0xFFFFFF00)), common(11, struct.pack('<I', 16)),
])

base = 'InternetGatewayDevice.Services.VoiceService.1.'
paths = [base + 'VoiceProfile.1.Line.2.Enable', base + 'VoiceProfile.1.Line.1.Codec.List.3.Priority',
         base + 'VoiceProfile.1.SIP.ProxyServer', base + 'VoiceProfileNumberOfEntries',
         base + 'VoiceProfile.1.Line.3.Enable', base + 'X_QRV_VoiceOperation', 'InternetGatewayDevice.X_QRV_VOIP_IPPARAMS.']
values = [b'true', b'0', b'192.168.0.1', b'-12', b'DHCP', b'1.5e3']
write('fuzz_paths', [bytes([40 + i]) + struct.pack('<H', 97 * i) + bytes([len(v)]) + v + p.encode()
                     for i, (p, v) in enumerate(zip(paths, values * 2))])
