#!/bin/bash
# Compiler launcher: compile.sh TREE COMPILER ARGUMENTS...   runs the compiler through ccache so that every clone of the
# tree is served by one cache, although the sources are compiled against precompiled headers.
#
# A precompiled header holds absolute paths of its tree, so it is cached for this folder only. What is compiled with it
# must not depend on those paths: ccache looks at FILE.pch.sum instead of the header itself, and that is written here,
# from the contents of everything that went into the header.
set -u
tree=$1
shift
export CCACHE_SLOPPINESS=pch_defines,time_macros,include_file_mtime,include_file_ctime CCACHE_PCH_EXTSUM=1
case " $* " in
    *" -emit-pch "*) ;;
    # ccache makes the paths that it knows relative; the one after "-Xclang -include -Xclang" is left to us.
    *) CCACHE_BASEDIR=$tree CCACHE_NOHASHDIR=1 exec ccache "${@/#"$PWD/"/}" ;;
esac
ccache "$@" || exit
while [ "$1" != -o ]; do shift; done
# The dependency file lists a target, then files with backslashes at the line ends; generated ones name the folder.
tr -s ' \\\n' '\n\n\n' <"$2.d" | grep '^/' | grep -v '/cmake_pch\.hxx' | sort -u | xargs sha256sum |
    cut -d' ' -f1 | sha256sum >"$2.sum"
