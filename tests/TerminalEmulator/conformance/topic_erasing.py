"""Erasing, plain and selective, and what protects a cell."""

THREE = r"abc\r\ndef\r\nghi\e[2;2H"
DEC = r"\e[1\x22qabc\e[\x22qdef\e[1;2H"   # "abc" protected by DECSCA
ISO = r"\eVabc\eWdef\e[1;2H"              # "abc" protected by SPA
KEEP = r"\eP$q\x22q\e\\"

CASES = [
    ("ED 0", THREE + r"\e[J", {"at": "2;2", "shows": {1: "abc", 2: "d  ", 3: "   "}}),
    ("ED 1", THREE + r"\e[1J", {"at": "2;2", "shows": {1: "   ", 2: "  f", 3: "ghi"}}),
    ("ED 2", THREE + r"\e[2J", {"at": "2;2", "shows": {1: "   ", 2: "   ", 3: "   "}}),
    ("ED 3 leaves the screen", THREE + r"\e[3J", {"shows": {1: "abc", 2: "def", 3: "ghi"}}),
    ("ED ignores the margins", THREE + r"\e[2;2r\e[?69h\e[2;2s\e[1;2r\e[2;2H\e[J",
     {"shows": {1: "abc", 2: "d  ", 3: "   "}}),
    ("EL 0", THREE + r"\e[K", {"shows": {2: "d  "}}),
    ("EL 1", THREE + r"\e[1K", {"shows": {2: "  f"}}),
    ("EL 2", THREE + r"\e[2K", {"shows": {2: "   "}}),
    ("EL ends the pending wrap", r"\e[1;79Hab\e[KX", {"first": 79, "shows": {1: "aX", 2: "  "}}),
    ("DECSED 0", THREE + r"\e[?J", {"shows": {1: "abc", 2: "d  ", 3: "   "}}),
    ("DECSED 1", THREE + r"\e[?1J", {"shows": {1: "   ", 2: "  f", 3: "ghi"}}),
    ("DECSED 2", THREE + r"\e[?2J", {"shows": {1: "   ", 2: "   ", 3: "   "}}),
    ("DECSED 3 does nothing", THREE + r"\e[?3J", {"shows": {1: "abc", 2: "def", 3: "ghi"}}),
    ("DECSEL 0", THREE + r"\e[?K", {"shows": {2: "d  "}}),
    ("DECSEL 1", THREE + r"\e[?1K", {"shows": {2: "  f"}}),
    ("DECSEL 2", THREE + r"\e[?2K", {"shows": {2: "   "}}),
    ("DECSED spares what DECSCA protects", DEC + r"\e[?2J\e[2#y", {"shows": {1: "abc   "}}),
    ("DECSEL spares what DECSCA protects", DEC + r"\e[?2K\e[2#y", {"shows": {1: "abc   "}}),
    ("ED does not spare it", DEC + r"\e[2J\e[2#y", {"shows": {1: "   "}}),
    ("EL does not spare it", DEC + r"\e[2K\e[2#y", {"shows": {1: "   "}}),
    ("ECH does not spare it", DEC + r"\e[9X\e[2#y", {"shows": {1: "a  "}}),
    ("DECSERA spares it", DEC + r"\e[1;1;1;6${\e[2#y", {"shows": {1: "abc   "}}),
    ("DECERA does not spare it", DEC + r"\e[1;1;1;6$z\e[2#y", {"shows": {1: "      "}}),
    ("text overwrites it", DEC + r"X\e[2#y", {"shows": {1: "aXcdef"}}),
    ("ED spares what SPA protects", ISO + r"\e[2J\e[2#y", {"shows": {1: "abc   "}}),
    ("EL spares what SPA protects", ISO + r"\e[2K\e[2#y", {"shows": {1: "abc   "}}),
    ("ECH spares what SPA protects", ISO + r"\e[9X\e[2#y", {"shows": {1: "abc   "}}),
    ("DECSED does not spare it", ISO + r"\e[?2J\e[2#y", {"shows": {1: "      "}}),
    ("DECSEL does not spare it", ISO + r"\e[?2K\e[2#y", {"shows": {1: "      "}}),
    ("DECSERA does not spare it", ISO + r"\e[1;1;1;6${\e[2#y", {"shows": {1: "      "}}),
    ("SGR 0 keeps protection on", r"\e[1\x22q\e[m", {"asks": [(KEEP, r'\eP1$r1"q\e\\')]}),
    ("DECSTR ends protection", r"\e[1\x22q\e[!p", {"asks": [(KEEP, r'\eP1$r0"q\e\\')]}),
    ("DECSCA 2 ends protection", r"\e[1\x22q\e[2\x22q", {"asks": [(KEEP, r'\eP1$r0"q\e\\')]}),
    ("ED 1 of the whole page", THREE + r"\e[25;80H\e[1J", {"shows": {1: "   ", 3: "   "}}),
    ("an unknown ED does nothing", THREE + r"\e[9J\e[9K", {"shows": {1: "abc", 2: "def"}}),
]
