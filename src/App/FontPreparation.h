#pragma once

#include <optional>
#include <pthread.h>

/// Reads the system's font configuration on a second processor while the program's objects are made: that is several
/// milliseconds of XML, which the first text would wait for otherwise. Does nothing where Qt has its fonts from
/// elsewhere.
class FontPreparation
{
public:
    /// Begins. With the application object there: what reads the configuration asks for the environment and for the
    /// locale, which must not change meanwhile.
    FontPreparation();
    /// As `wait`.
    ~FontPreparation();
    FontPreparation(const FontPreparation &) = delete;
    FontPreparation &operator=(const FontPreparation &) = delete;

    /// Returns when it is done. To be called before the first text, which would read the same again beside it.
    void wait();

private:
    std::optional<pthread_t> m_thread;
};
