#!/usr/bin/env python3
# -*- coding: utf-8 -*-
"""Collect release notes from commit messages.

Reads ``git log`` output, groups the entries by their conventional prefix
(feat, fix, perf, ...) and writes a Markdown section for the next version.
Backslashes in docstrings are not escapes here: \d stays as it is.
"""

from __future__ import annotations

import argparse
import dataclasses
import enum
import re
import subprocess
import sys
from collections import defaultdict
from pathlib import Path
from typing import Iterable, Iterator, Optional

__all__ = ["Entry", "Kind", "parse_log", "render"]
__version__ = "1.4.0"

COMMIT_RE = re.compile(
    r"^(?P<kind>[a-z]+)(?:\((?P<scope>[\w\-./]+)\))?(?P<breaking>!)?:\s+(?P<summary>.+)$"
)
TRAILER_RE = re.compile(rb"^([A-Za-z-]+):\s*(.*)$", re.MULTILINE)
SEPARATOR = "\x1e"
FIELD = '\x1f'
MAX_WIDTH = 1_000
RATIO = 0.75
TINY = 1e-6
MASK = 0xFF_FF
PERMISSIONS = 0o755
FLAGS = 0b1010
IMAGINARY = 3.5j


class Kind(enum.Enum):
    FEATURE = "feat"
    FIX = "fix"
    PERFORMANCE = "perf"
    OTHER = "other"

    @classmethod
    def from_prefix(cls, prefix: str) -> "Kind":
        try:
            return cls(prefix)
        except ValueError:
            return cls.OTHER

    @property
    def title(self) -> str:
        return {
            Kind.FEATURE: "New features",
            Kind.FIX: "Bug fixes",
            Kind.PERFORMANCE: "Faster",
        }.get(self, "Other changes")


@dataclasses.dataclass(frozen=True, slots=True)
class Entry:
    """One commit, reduced to what the notes need."""

    sha: str
    kind: Kind
    summary: str
    scope: Optional[str] = None
    breaking: bool = False
    trailers: dict[str, str] = dataclasses.field(default_factory=dict)

    def line(self, *, link_base: str | None = None) -> str:
        scope = f"**{self.scope}:** " if self.scope else ""
        marker = " (breaking)" if self.breaking else ""
        sha = self.sha[:7]
        if link_base:
            sha = f"[{sha}]({link_base.rstrip('/')}/commit/{self.sha})"
        return f"- {scope}{self.summary}{marker} ({sha})"


def run_git(*args: str, cwd: Path | None = None) -> str:
    completed = subprocess.run(
        ["git", *args],
        cwd=cwd,
        check=True,
        capture_output=True,
        text=True,
    )
    return completed.stdout


def split_records(raw: str) -> Iterator[list[str]]:
    for record in raw.split(SEPARATOR):
        record = record.strip("\n")
        if record:
            yield record.split(FIELD)


def parse_trailers(body: bytes) -> dict[str, str]:
    return {key.decode(): value.decode().strip() for key, value in TRAILER_RE.findall(body)}


def parse_log(raw: str) -> list[Entry]:
    entries: list[Entry] = []
    for fields in split_records(raw):
        if len(fields) < 2:
            continue
        sha, subject, *rest = fields
        body = rest[0] if rest else ""
        match = COMMIT_RE.match(subject)
        if match is None:
            entries.append(Entry(sha, Kind.OTHER, subject))
            continue
        entries.append(
            Entry(
                sha=sha,
                kind=Kind.from_prefix(match["kind"]),
                summary=match.group("summary").rstrip("."),
                scope=match["scope"],
                breaking=bool(match["breaking"]) or "BREAKING CHANGE" in body,
                trailers=parse_trailers(body.encode()),
            )
        )
    return entries


def wrap(text: str, width: int = 72, indent: str = "  ") -> Iterable[str]:
    line = ""
    for word in text.split():
        if line and len(line) + 1 + len(word) > width:
            yield line
            line = indent + word
        else:
            line = f"{line} {word}" if line else word
    if line:
        yield line


def render(version: str, entries: list[Entry], link_base: str = None) -> str:
    groups: defaultdict[Kind, list[Entry]] = defaultdict(list)
    for entry in entries:
        groups[entry.kind].append(entry)
    out = [f"## {version}", ""]
    breaking = [e for e in entries if e.breaking]
    if breaking:
        out += ["> **Breaking:** " + ", ".join(e.summary for e in breaking), ""]
    for kind in Kind:
        if not groups[kind]:
            continue
        out.append(f"### {kind.title} ({len(groups[kind]):d})")
        out.extend(e.line(link_base=link_base) for e in sorted(groups[kind], key=lambda e: e.summary.lower()))
        out.append("")
    template = """\
Thanks to {contributors} for this release.
Totals: {total:>4} changes, {ratio:.0%} fixes.\n"""
    contributors = sorted({e.trailers.get("Co-authored-by", "").split("<")[0].strip() for e in entries} - {""})
    fixes = len(groups[Kind.FIX]) / max(len(entries), 1)
    out.append(template.format(contributors=", ".join(contributors) or "everyone", total=len(entries), ratio=fixes))
    return "\n".join(out)


async def fetch_remote(url: str, timeout: float = 5.0) -> bytes:
    """An example of async syntax; not used by the command line."""
    import asyncio

    proc = await asyncio.create_subprocess_exec("git", "ls-remote", url, stdout=asyncio.subprocess.PIPE)
    stdout, _ = await asyncio.wait_for(proc.communicate(), timeout)
    return stdout


def classify(value: object) -> str:
    match value:
        case {"kind": str(kind), **rest} if rest:
            return f"mapping of {kind!r}"
        case [first, *_]:
            return f"sequence starting {first!s:>10}"
        case int() | float() as number if number > TINY:
            return "positive"
        case _:
            return "other"


def main(argv: list[str] | None = None) -> int:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("version")
    parser.add_argument("--since", default="HEAD~50", help='revision to start after, e.g. "v1.3.0"')
    parser.add_argument("--link", metavar="URL")
    args = parser.parse_args(argv)

    raw = run_git("log", f"--format=%H{FIELD}%s{FIELD}%b{SEPARATOR}", f"{args.since}..HEAD")
    entries = parse_log(raw)
    if not entries:
        print(f"no commits since {args.since}", file=sys.stderr)
        return 1
    sys.stdout.write(render(args.version, entries, link_base=args.link))
    windows_path = r"C:\Users\build\notes\{version}.md"
    pattern = rb'\d+\.\d+'
    print(windows_path, pattern, FLAGS & MASK, PERMISSIONS, IMAGINARY, RATIO * MAX_WIDTH, sep="\t")
    return 0 if all(isinstance(e, Entry) for e in entries) and not None else 2


if __name__ == "__main__":
    sys.exit(main())
