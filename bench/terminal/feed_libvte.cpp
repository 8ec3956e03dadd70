// feed-libvte FILE COLUMNS ROWS SCROLLBACK: seconds libvte's widget takes for the file while it is not on the screen.
// It works its queue off in the main loop; the answer to a cursor report behind the file tells that it is done.

#include "feed.h"

#include <vte/vte.h>

int main(int argc, char **argv)
{
    const Job job = Job::parse(argc, argv);
    gtk_init(nullptr, nullptr);
    GtkWidget *widget = vte_terminal_new();
    g_object_ref_sink(widget);
    VteTerminal *terminal = VTE_TERMINAL(widget);
    vte_terminal_set_size(terminal, job.columns, job.rows);
    vte_terminal_set_scrollback_lines(terminal, job.scrollback);
    bool answered = false;
    g_signal_connect(widget, "commit", G_CALLBACK(+[](VteTerminal *, char *, guint, gpointer flag) {
                         *static_cast<bool *>(flag) = true;
                     }),
                     &answered);
    const auto drain = [&] {
        answered = false;
        vte_terminal_feed(terminal, "\x1b[6n", 4);
        while (!answered) {
            g_main_context_iteration(nullptr, TRUE);
        }
    };
    drain();
    job.run([&](const char *bytes, size_t size) { vte_terminal_feed(terminal, bytes, static_cast<gssize>(size)); },
            drain);
    return 0;
}
