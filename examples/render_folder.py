#!/usr/bin/env python3
"""Renders every .ofd file in a folder, page by page with its seals, into
PNG files beside them (or in OUT), with a pool of threads; prints each
document's signatures and verdicts.

  python3 examples/render_folder.py FOLDER [OUT] [--dpi 150] [--threads N]
"""

import argparse
import os
import sys
from concurrent.futures import ThreadPoolExecutor

import tarvik


def render(path, out_dir, dpi):
    """Renders one document; returns the lines to print."""
    stem = os.path.splitext(os.path.basename(path))[0]
    try:
        with tarvik.open(path) as doc:
            lines = [f"{path}: {len(doc)} page(s)"]
            for s in doc.signatures:
                lines.append(f"  seal {s.seal_name!r} on page {s.page}: {s.verdict}"
                             + (f" ({s.verdict_reason})" if s.verdict_reason else ""))
            for page in range(len(doc)):
                img = doc.render(page, dpi=dpi)  # the GIL is released while rendering
                img.save(os.path.join(out_dir, f"{stem}-{page + 1}.png"))
                lines += [f"  page {page + 1}: seal {r.stamp_id} not drawn: {r.reason}"
                          for r in img.seals if not r.drawn]
            return lines
    except tarvik.Error as e:
        return [f"{path}: {e.reason}"]


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("folder")
    parser.add_argument("out", nargs="?")
    parser.add_argument("--dpi", type=float, default=150)
    parser.add_argument("--threads", type=int, default=os.cpu_count())
    args = parser.parse_args()
    out_dir = args.out or args.folder
    os.makedirs(out_dir, exist_ok=True)
    files = sorted(os.path.join(args.folder, f) for f in os.listdir(args.folder)
                   if f.lower().endswith(".ofd"))
    failed = False
    with ThreadPoolExecutor(max_workers=args.threads) as pool:
        for lines in pool.map(lambda p: render(p, out_dir, args.dpi), files):
            print("\n".join(lines))
            failed |= "page(s)" not in lines[0]
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
