#!/usr/bin/python3
"""Reads a vCard file with python3-vobject and writes its people into another.

    vobject_peer.py FROM TO
"""

import sys

import vobject


def main():
    source, target = sys.argv[1:]
    with open(source, encoding="utf-8", newline="") as file:
        text = file.read()
    with open(target, "w", encoding="utf-8", newline="") as file:
        for card in vobject.readComponents(text, allowQP=True):
            file.write(card.serialize(validate=False))


if __name__ == "__main__":
    main()
