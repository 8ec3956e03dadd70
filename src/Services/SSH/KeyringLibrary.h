#pragma once

#include "Services/SSH/DesktopKeyring.h"

/// The library that talks to the desktop's keyring, apart from the program.
namespace KeyringLibrary
{

/// A keyring of its own for the caller; null, and a line in the log, where the library cannot be loaded. The first
/// call loads it, which takes some milliseconds.
std::unique_ptr<DesktopKeyring> makeKeyring();

} // namespace KeyringLibrary
