#include "terminal_c.h"

#include <QTest>

#include <dlfcn.h>
#include <string>
#include <string_view>

// The engine behind its plain C functions, loaded as an outside harness loads it.
class TestCFace : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void cellsAreCodePoints();
    void historyAndSize();
    void repliesAreTakenInPieces();

private:
    template<class Function>
    void load(Function *&function, const char *name)
    {
        function = reinterpret_cast<Function *>(::dlsym(m_library, name));
        QVERIFY2(function, name);
    }

    void feed(std::string_view bytes) { m_feed(m_terminal, bytes.data(), bytes.size()); }

    void *m_library = nullptr;
    void *m_terminal = nullptr;
    decltype(t_open) *m_open = nullptr;
    decltype(t_close) *m_close = nullptr;
    decltype(t_feed) *m_feed = nullptr;
    decltype(t_reply) *m_reply = nullptr;
    decltype(t_cell) *m_cell = nullptr;
    decltype(t_history) *m_history = nullptr;
    decltype(t_sync) *m_sync = nullptr;
    decltype(t_resize) *m_resize = nullptr;
};

void TestCFace::initTestCase()
{
    m_library = ::dlopen(TARNWELL_VT_FACE, RTLD_NOW | RTLD_LOCAL);
    QVERIFY2(m_library, ::dlerror());
    load(m_open, "t_open");
    load(m_close, "t_close");
    load(m_feed, "t_feed");
    load(m_reply, "t_reply");
    load(m_cell, "t_cell");
    load(m_history, "t_history");
    load(m_sync, "t_sync");
    load(m_resize, "t_resize");
}

void TestCFace::init()
{
    m_terminal = m_open(10, 3, 5);
}

void TestCFace::cleanup()
{
    m_close(m_terminal);
}

void TestCFace::cellsAreCodePoints()
{
    feed("a \u6f22e\u0301\x1b[2;3Hb");
    m_sync(m_terminal);
    QCOMPARE(m_cell(m_terminal, 0, 0), uint32_t{'a'});
    QCOMPARE(m_cell(m_terminal, 0, 1), uint32_t{' '});
    QCOMPARE(m_cell(m_terminal, 0, 2), uint32_t{0x6f22});
    QCOMPARE(m_cell(m_terminal, 0, 3), uint32_t{0}); // its second column
    QCOMPARE(m_cell(m_terminal, 0, 4), uint32_t{'e'});
    QCOMPARE(m_cell(m_terminal, 0, 5), uint32_t{0});
    QCOMPARE(m_cell(m_terminal, 1, 1), uint32_t{0}); // skipped over
    QCOMPARE(m_cell(m_terminal, 1, 2), uint32_t{'b'});
    for (const auto &[row, column] : {std::pair{-1, 0}, {3, 0}, {0, -1}, {0, 10}}) {
        QCOMPARE(m_cell(m_terminal, row, column), uint32_t{0});
    }
    feed("\x1b[2J");
    QCOMPARE(m_cell(m_terminal, 1, 2), uint32_t{0});
}

void TestCFace::historyAndSize()
{
    QCOMPARE(m_history(m_terminal), 0);
    feed("1\r\n2\r\n3\r\n4\r\n5");
    QCOMPARE(m_history(m_terminal), 2);
    QCOMPARE(m_cell(m_terminal, 0, 0), uint32_t{'3'});
    m_resize(m_terminal, 20, 5);
    QCOMPARE(m_history(m_terminal), 0);
    QCOMPARE(m_cell(m_terminal, 0, 0), uint32_t{'1'});
    feed("\x1b[5;20Hx");
    QCOMPARE(m_cell(m_terminal, 4, 19), uint32_t{'x'});
    feed(std::string(50, '\n'));
    QCOMPARE(m_history(m_terminal), 5); // the limit
    feed("\x1b[?1049h\n\n\n");
    QCOMPARE(m_history(m_terminal), 5);
    feed("\x1b[3J");
    QCOMPARE(m_history(m_terminal), 0);
}

void TestCFace::repliesAreTakenInPieces()
{
    char out[8];
    QCOMPARE(m_reply(m_terminal, out, sizeof out), size_t{0});
    feed("\x1b[6n\x1b[5n");
    std::string taken;
    for (size_t count; (count = m_reply(m_terminal, out, 4)) > 0;) {
        QVERIFY(count <= 4);
        taken.append(out, count);
        if (taken.size() == 4) {
            feed("\x1b[5n"); // what is answered meanwhile comes behind
        }
    }
    QCOMPARE(taken, std::string("\x1b[1;1R\x1b[0n\x1b[0n"));
    feed("\x1b[5n");
    QCOMPARE(m_reply(m_terminal, out, 0), size_t{0});
    QCOMPARE(m_reply(m_terminal, out, sizeof out), size_t{4});
}

QTEST_GUILESS_MAIN(TestCFace)
#include "test_c_face.moc"
