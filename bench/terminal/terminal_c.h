#pragma once

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/// The engine for harnesses that are not C++. One thread at a time for each terminal.

/// A terminal of this size that keeps `scrollback` rows.
void *t_open(int cols, int rows, int scrollback);
void t_feed(void *terminal, const char *bytes, size_t size);
/// Takes what the terminal has answered so far, at most `cap` bytes; the rest stays for the next call.
size_t t_reply(void *terminal, char *out, size_t cap);
/// The first code point of a cell of the visible screen, counted from 0; 0 if nothing was written there since it was
/// last erased, or if it lies outside.
uint32_t t_cell(void *terminal, int row, int col);
/// Rows kept above the main screen, whichever screen shows.
int t_history(void *terminal);
/// Returns when everything fed has taken effect.
void t_sync(void *terminal);
void t_resize(void *terminal, int cols, int rows);
void t_close(void *terminal);

#ifdef __cplusplus
}
#endif
