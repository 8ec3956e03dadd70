#include "App/FontPreparation.h"

#include <clocale>
#include <cstdlib>
#include <dlfcn.h>
#include <string>
#include <utility>

namespace
{

void *readConfiguration(void *)
{
    // Of the library that QtGui has loaded; whoever asks for it later finds the result.
    if (const auto initialise = reinterpret_cast<int (*)()>(dlsym(RTLD_DEFAULT, "FcInit"))) {
        initialise();
    }
    return nullptr;
}

void makeLast(const char *variable)
{
    if (const char *const value = std::getenv(variable)) {
        const std::string copy = value;
        unsetenv(variable);
        setenv(variable, copy.c_str(), 1);
    }
}

} // namespace

FontPreparation::FontPreparation()
{
    std::setlocale(LC_ALL, "");
    makeLast("DESKTOP_STARTUP_ID");
    pthread_t thread{};
    if (pthread_create(&thread, nullptr, &readConfiguration, nullptr) == 0) {
        m_thread = thread;
    }
}

FontPreparation::~FontPreparation()
{
    wait();
}

void FontPreparation::wait()
{
    if (const auto thread = std::exchange(m_thread, std::nullopt)) {
        pthread_join(*thread, nullptr);
    }
}
