#include "App/FontPreparation.h"

#include <dlfcn.h>

FontPreparation::FontPreparation()
{
    // Of the library that QtGui has loaded. From several threads at once it is safe; who comes later finds the
    // result.
    using Initialise = int (*)();
    if (const auto initialise = reinterpret_cast<Initialise>(dlsym(RTLD_DEFAULT, "FcInit"))) {
        m_thread = std::thread([initialise] { initialise(); });
    }
}

FontPreparation::~FontPreparation()
{
    wait();
}

void FontPreparation::wait()
{
    if (m_thread.joinable()) {
        m_thread.join();
    }
}
