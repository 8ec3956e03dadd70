"""DECRQSS: settings told as the sequences that make them."""


def told(name, make, what, answer):
    return (name, make, {"asks": [(r"\eP$q" + what + r"\e\\", r"\eP1$r" + answer + what + r"\e\\")]})


CASES = [
    told("DECSCL", "", '"p', "65;1"),
    told("DECSCL at level 4", r"\e[64;1\x22p", '"p', "64;1"),
    told("DECSCL at level 1", r"\e[61\x22p", '"p', "61"),
    ("DECSCL with eight-bit answers", r"\e[65;2\x22p",
     {"asks": [(r"\eP$q" + '"p' + r"\e\\", r"\x901$r65;0" + '"p' + r"\x9c")]}),
    ("DECSCL without a second number is eight-bit", r"\e[64\x22p", {"asks": [(r"\e[18t", r"\x9b8;25;80t")]}),
    ("DECSCL beyond the terminal is ignored", r"\e[64;1\x22p\e[66;1\x22p",
     {"asks": [(r"\eP$q" + '"p' + r"\e\\", r"\eP1$r64;1" + '"p' + r"\e\\")]}),
    told("DECSCA", r"\e[1\x22q", '"q', "1"),
    told("DECSCA off", "", '"q', "0"),
    told("DECSTBM", r"\e[5;6r", "r", "5;6"),
    told("DECSLRM", r"\e[?69h\e[3;4s", "s", "3;4"),
    told("DECSLPP", r"\e[27t", "t", "27"),
    told("DECSLPP is at least 24", r"\e[8;10;80t", "t", "24"),
    told("DECSCPP", "", "$|", "80"),
    told("DECSCPP of 132", r"\e[?40h\e[132$|", "$|", "132"),
    told("DECSNLS", r"\e[30*|", "*|", "30"),
    told("DECSCUSR", r"\e[4 q", " q", "4"),
    told("DECSCUSR of a bar", r"\e[5 q", " q", "5"),
    told("DECSACE", r"\e[2*x", "*x", "2"),
    told("DECSSDT", r"\e[2$~", "$~", "2"),
    told("DECSASD", r"\e[2$~\e[1$}", "$}", "1"),
    told("DECSASD off", "", "$}", "0"),
    told("DECSWBV", r"\e[4 t", " t", "4"),
    told("DECSMBV", r"\e[6 u", " u", "6"),
    told("XTQMODKEYS", r"\e[>4;1m", ">4m", ">4;1")[:2] + ({"asks": [(r"\eP$q>4m\e\\", r"\eP1$r>4;1m\e\\")]},),
    told("SGR off", "", "m", "0"),
    told("SGR bold", r"\e[1m", "m", "0;1"),
    told("SGR with all attributes", r"\e[1;2;3;4;5;7;8;9m", "m", "0;1;2;3;4;5;7;8;9"),
    told("SGR double underline", r"\e[21m", "m", "0;21"),
    told("SGR colours", r"\e[31;42m", "m", "0;31;42"),
    told("SGR bright colours", r"\e[91;102m", "m", "0;91;102"),
    told("SGR indexed colours", r"\e[38;5;99;48:5:100m", "m", "0;38:5:99;48:5:100"),
    told("SGR direct colours", r"\e[38;2;1;2;3;48:2::4:5:6m", "m", "0;38:2::1:2:3;48:2::4:5:6"),
    told("SGR taken back", r"\e[1;4;7;31m\e[22;24;27;39m", "m", "0"),
    told("XTPUSHSGR and XTPOPSGR", r"\e[1m\e[#{\e[0;4m\e[#}", "m", "0;1"),
    ("an unknown setting", "", {"asks": [(r"\eP$qx\e\\", r"\eP0$r\e\\")]}),
]
