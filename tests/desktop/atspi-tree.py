#!/usr/bin/python3
# What a screen reader reads of one program: its AT-SPI tree on the session's
# accessibility bus, one showing object a line, "role | name | description",
# indented by depth. Usage: atspi-tree.py PID
import sys

import pyatspi


def dump(node, depth):
    try:
        states = node.getState()
        if depth > 0 and not states.contains(pyatspi.STATE_SHOWING):
            return
        print("  " * depth + f"{node.getRoleName()} | {node.name} | {node.description}")
        for child in node:
            if child is not None:
                dump(child, depth + 1)
    except Exception:  # an object gone while it is read
        pass


pid = int(sys.argv[1])
for application in pyatspi.Registry.getDesktop(0):
    if application is not None and application.get_process_id() == pid:
        dump(application, 0)
