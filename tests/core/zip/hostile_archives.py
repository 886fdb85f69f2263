#!/usr/bin/env python3
"""Writes hostile and malformed ZIP archives, and what extracting each must give, into a folder.

Standard library only: every archive is built here byte by byte, none is downloaded. The manifest
(manifest.json) lists for each archive the entries the result must and must not hold, the messages
the report must carry and whether the run must stop before creating anything.
"""
import json
import os
import struct
import sys
import zlib

UNIX = 3


def member(name, data=b"", *, method=8, mode=0o100644, flags=0x0800, made_by_host=UNIX,
           crc=None, usize=None, csize=None, local_method=None, local_name=None, raw=None):
    return dict(name=name if isinstance(name, bytes) else name.encode(), data=data, method=method,
                mode=mode, flags=flags, host=made_by_host, crc=crc, usize=usize, csize=csize,
                local_method=local_method, local_name=local_name, raw=raw)


def compressed(m):
    if m["raw"] is not None:
        return m["raw"]
    if m["method"] == 8:
        c = zlib.compressobj(6, zlib.DEFLATED, -15)
        return c.compress(m["data"]) + c.flush()
    return m["data"]


def build(members, *, comment=b"", offsets=None, count=None, cd_offset=None, cd_size=None):
    """A classic archive of members; the keyword arguments bend its end record or offsets."""
    out = bytearray()
    central = bytearray()
    for i, m in enumerate(members):
        body = compressed(m)
        crc = m["crc"] if m["crc"] is not None else zlib.crc32(m["data"])
        usize = m["usize"] if m["usize"] is not None else len(m["data"])
        csize = m["csize"] if m["csize"] is not None else len(body)
        offset = len(out)
        local_name = m["local_name"] if m["local_name"] is not None else m["name"]
        local_method = m["local_method"] if m["local_method"] is not None else m["method"]
        out += struct.pack("<IHHHHHIIIHH", 0x04034B50, 20, m["flags"], local_method, 0, 0x5A21,
                           crc, csize, usize, len(local_name), 0) + local_name + body
        if offsets is not None and offsets[i] is not None:
            offset = offsets[i]
        attributes = (m["mode"] << 16) | (0x10 if (m["mode"] & 0o170000) == 0o040000 else 0)
        central += struct.pack("<IHHHHHHIIIHHHHHII", 0x02014B50, (m["host"] << 8) | 20, 20, m["flags"],
                               m["method"], 0, 0x5A21, crc, csize, usize, len(m["name"]), 0, 0, 0, 0,
                               attributes, offset) + m["name"]
    start = len(out)
    out += central
    n = len(members) if count is None else count
    out += struct.pack("<IHHHHIIH", 0x06054B50, 0, 0, n, n,
                       len(central) if cd_size is None else cd_size,
                       start if cd_offset is None else cd_offset, len(comment)) + comment
    return bytes(out)


def folder(name, mode=0o040755):
    return member(name, method=0, mode=mode)


def link(name, target):
    return member(name, target.encode(), method=0, mode=0o120777)


def cases():
    # Two plain members in every archive keep the result a folder named after the archive, whatever
    # else is refused, so that expectations can name paths inside it.
    ok = [member("keep.txt", b"kept\n"), member("also.txt", b"also\n")]
    yield "escapes", build([
        member("../evil1", b"x"), member("../../evil2", b"x"), member("/tmp/orbisk-evil3", b"x"),
        member("a/../../evil4", b"x"), member("..\\evil5", b"x"), member("a\\..\\..\\evil6", b"x"),
        member("./../evil7", b"x"), member(b"nul\0evil8", b"x"), member("", b"x"), member("/", b"x"),
        member("a/./b.txt", b"inside\n")] + ok), dict(
        present=["a/b.txt", "keep.txt"], failures=["unsafe path"] * 10)
    yield "link-outside", build([
        link("up", "../../outside"), link("abs", "/etc/passwd"), link("fine", "sub/file"),
        member("sub/file", b"f")] + ok), dict(present=["fine", "sub/file"], absent=["up", "abs"],
                                            failures=["points outside"] * 2)
    # Each link alone stays inside; followed through each other they climb out.
    yield "link-chain", build([
        folder("sub/"), link("d", "sub"), link("sub/e", ".."), link("x", "d/e/.."),
        link("y", "d/e/../..")] + ok), dict(present=["d", "sub/e"], absent=["x", "y"],
                                          failures=["points outside"] * 2)
    # A file written "through" a link that an earlier member made: the link never exists while
    # files are written, so the file lands in a real folder and the link is refused.
    yield "write-through-link", build([
        link("l", "../outside"), member("l/pwned", b"p"), link("m", "sub"), member("m/pwned", b"p"),
        folder("sub/")] + ok), dict(present=["l/pwned", "m/pwned"], absent=["sub/pwned"],
                                   failures=["points outside", "create the link"])
    yield "duplicates", build([
        member("dup.txt", b"first"), member("dup.txt", b"second"), member("x", b"file"), link("x", "dup.txt")] + ok), dict(present=["dup.txt", "x"], contents={"dup.txt": "first", "x": "file"},
                   failures=["create the file", "create the link"])
    data = b"A" * 5000
    one = member("one.txt", data)
    plain = build([one, member("s.txt", b"s", method=0)])
    # The second record points into the first member's bytes: neither can be trusted.
    yield "overlap-inside", build([one, member("two.txt", b"B" * 100)] + ok, offsets=[None, 10, None, None]), dict(
        absent=["one.txt", "two.txt"], failures=["damaged"] * 2)
    # Many records sharing one local header: the classic overlapping-entry bomb.
    bomb = [member("bomb%d.txt" % i, b"\0" * 100000) for i in range(5)]
    yield "overlap-bomb", build(bomb + ok, offsets=[None, 0, 0, 0, 0, None, None]), dict(
        present=["bomb0.txt"], absent=["bomb1.txt", "bomb4.txt"], failures=["damaged"] * 4)
    # Declares 10 bytes, inflates to 20 MB: must stop at once, keep nothing.
    yield "size-lie", build([member("lie.bin", b"\0" * 20_000_000, usize=10, crc=0)] + ok), dict(
        absent=["lie.bin"], present=["keep.txt"], failures=["damaged"], small=True)
    yield "size-short", build([member("short.bin", b"12345", usize=50)] + ok), dict(
        absent=["short.bin"], failures=["damaged"])
    yield "stored-size-lie", build([member("s.bin", b"x" * 100, method=0, usize=10, csize=100)] + ok), dict(
        absent=["s.bin"], failures=["damaged"])
    yield "checksums", build([member("wrong.txt", b"data", crc=0x12345678), member("zero.txt", b"data", crc=0)] + ok), dict(absent=["wrong.txt", "zero.txt"], failures=["checksum"] * 2)
    yield "local-central-method", build([member("m.txt", b"data", local_method=0)] + ok), dict(
        absent=["m.txt"], failures=["damaged"])
    yield "local-central-name", build([member("central.txt", b"data", local_name=b"../local.txt")] + ok), dict(
        present=["central.txt"], absent=["local.txt"])
    yield "encrypted-and-method", build([member("secret.txt", b"s", flags=0x0801),
                                         member("m12.txt", b"x", method=12, raw=b"BZh9")] + ok), dict(
        absent=["secret.txt", "m12.txt"], failures=["encrypted", "method 12"])
    yield "special-modes", build([
        member("suid", b"#!/bin/sh\n", mode=0o104755), member("sgid", b"x", mode=0o102755),
        folder("sticky/", mode=0o041777), member("fifo", b"", mode=0o010644),
        member("chardev", b"", mode=0o020644), member("socket", b"", mode=0o140644)] + ok), dict(
        present=["suid", "sgid", "sticky/", "keep.txt"], plain_types=True)
    yield "closed-folders", build([
        folder("locked/", mode=0o040000), member("locked/inner.txt", b"i"), folder("readonly/", mode=0o040500),
        member("readonly/sub/deep.txt", b"d")] + ok), dict(
        present=["locked/inner.txt", "readonly/sub/deep.txt"], modes={"locked": 0o755, "readonly": 0o500})
    yield "macosx", build([member("__MACOSX/._keep.txt", b"fork"), member("__MACOSX", b"x"),
                           member("real.txt", b"r")] + ok), dict(present=["keep.txt", "real.txt"], absent=["__MACOSX"])
    yield "only-macosx", build([member("__MACOSX/._x", b"fork")]), dict(nothing=True)
    yield "zip64-count", build(ok, count=0xFFFF), dict(abort="ZIP64")
    yield "directory-past-end", build(ok, cd_size=100000), dict(abort="not a ZIP")
    yield "count-larger-than-directory", build(ok, count=5000), dict(abort="not a ZIP")
    yield "comment-longest", build([member("other.txt", b"o")] + ok, comment=b"c" * 65535), dict(
        present=["keep.txt", "other.txt"])
    yield "cp437-name", build([member(b"caf\x82.txt", b"cp", flags=0, made_by_host=0)] + ok), dict(
        present=["caf\u00e9.txt"])
    yield "tiny", b"PK\x05\x06" + b"\0" * 17, dict(abort="not a ZIP")
    for cut in range(0, len(plain), 7):
        yield "truncated-%04d" % cut, plain[:cut], dict(truncated=True)


def main():
    out = sys.argv[1]
    os.makedirs(out, exist_ok=True)
    manifest = []
    for name, data, expect in cases():
        with open(os.path.join(out, name + ".zip"), "wb") as f:
            f.write(data)
        manifest.append(dict(archive=name + ".zip", **expect))
    with open(os.path.join(out, "manifest.json"), "w") as f:
        json.dump(manifest, f, indent=1)


if __name__ == "__main__":
    main()
