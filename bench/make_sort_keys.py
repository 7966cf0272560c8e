#!/usr/bin/env python3
"""Writes sort keys of the kinds a data export holds, one per line, UTF-8.

Usage: make_sort_keys.py OUTPUT [COUNT] [SEED]   (COUNT defaults to 5000000)

The same COUNT and SEED always give the same file. About a tenth of the keys
each: ids, integers, signed decimals, ISO dates, words, names, codes mixing
letters and numbers ("a2", "item10"), numbers with leading zeros, cells with
a leading blank, and empty cells.
"""
import random
import sys

WORDS = [
    "apple", "berry", "cedar", "delta", "ember", "fjord", "grape", "harbor", "indigo",
    "juniper", "kettle", "lumen", "maple", "nectar", "orchid", "pepper", "quartz", "river",
    "saffron", "timber", "umber", "violet", "willow", "xenon", "yarrow", "zephyr",
    "Alpha", "Bravo", "Ökonomie", "café", "naïve", "Zürich", "São Paulo",
]
FIRST = ["Maria", "John", "Aiko", "Pierre", "Fatima", "Lars", "Chen", "Olga", "Diego",
         "Amara", "Noah", "Ingrid", "Ravi", "Sofia", "Tomás", "Yusuf"]
LAST = ["Garcia", "Smith", "Tanaka", "Dubois", "Haddad", "Nilsson", "Wang", "Petrova",
        "Lopez", "Okafor", "Brown", "Johansson", "Patel", "Rossi", "Silva", "Demir"]
CODES = ["a", "b", "item", "row", "v", "x", "SKU-", "part_"]


def key(r):
    kind = r.randrange(10)
    if kind == 0:
        return str(r.randrange(1, 10_000_000))
    if kind == 1:
        return str(r.randrange(-100_000, 100_000))
    if kind == 2:
        return "%.*f" % (r.randrange(1, 5), r.uniform(-10_000, 10_000))
    if kind == 3:
        return "%04d-%02d-%02d" % (r.randrange(1990, 2031), r.randrange(1, 13), r.randrange(1, 29))
    if kind == 4:
        return r.choice(WORDS)
    if kind == 5:
        return r.choice(FIRST) + " " + r.choice(LAST)
    if kind == 6:
        return r.choice(CODES) + str(r.randrange(0, 1000))
    if kind == 7:
        return "%0*d" % (r.randrange(2, 7), r.randrange(0, 1000))
    if kind == 8:
        return " " + r.choice(WORDS)
    return ""


def main():
    if len(sys.argv) < 2:
        sys.exit(__doc__)
    path = sys.argv[1]
    count = int(sys.argv[2]) if len(sys.argv) > 2 else 5_000_000
    seed = int(sys.argv[3]) if len(sys.argv) > 3 else 1
    r = random.Random(seed)
    with open(path, "w", encoding="utf-8", newline="\n") as out:
        batch = []
        for i in range(count):
            batch.append(key(r))
            if len(batch) == 100_000:
                out.write("\n".join(batch) + "\n")
                batch.clear()
        if batch:
            out.write("\n".join(batch) + "\n")


if __name__ == "__main__":
    main()
