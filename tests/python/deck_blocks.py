"""Reads back the decks that the tools under tools/ write, for their tests."""
import pathlib

HEADERS = {"TITLE", "CONTROLS", "ELEMENTS", "NODES", "LOADS", "CONSTRAINTS", "MATERIALS", "TRACKERS",
           "AMPLITUDES", "CONTACT_SURFACES", "RIGID_BODIES"}


def read_blocks(path):
    """Nodes {n: [x, y, z]}, node words {n: {key: value}}, elements {type: {n: (nodes, words after them)}}
    and the lines of the other blocks {keyword: [line, ...]}."""
    nodes, node_words, elements, other = {}, {}, {}, {}
    block = kind = ""
    for line in pathlib.Path(path).read_text().splitlines():
        words = line.split()
        if not words or words[0].startswith("**"):
            continue
        if words[0] in HEADERS:
            block, kind = words[0], (words[2] if len(words) > 2 else "")
            continue
        if block == "NODES":
            n, x, extra = int(words[0]), [0.0, 0.0, 0.0], {}
            for key, value in zip(words[1::2], words[2::2]):
                if key in ("X", "Y", "Z"):
                    x["XYZ".index(key)] = float(value)
                else:
                    extra[key] = value
            nodes[n], node_words[n] = x, extra
        elif block == "ELEMENTS":
            count = next((k for k, w in enumerate(words[2:]) if not w[0].isdigit()), len(words) - 2)
            elements.setdefault(kind, {})[int(words[0])] = ([int(w) for w in words[2:2 + count]],
                                                            words[2 + count:])
        else:
            other.setdefault(block, []).append(line)
    return nodes, node_words, elements, other
