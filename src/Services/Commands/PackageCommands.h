#pragma once

#include "Services/Commands/SSHCommand.h"

/// The remote lines about packages that every server is asked.

/// Whether apt is there: prints its path.
class DetectAptCommand : public BaseSSHCommand
{
public:
    DetectAptCommand()
        : BaseSSHCommand(
              {.description = QStringLiteral("Detect APT package manager"),
               .category = CommandCategory::Packages,
               .commandString = QStringLiteral("command -v apt 2>/dev/null || command -v apt-get 2>/dev/null")})
    {
    }
};

/// Whether dnf is there: prints its path.
class DetectDnfCommand : public BaseSSHCommand
{
public:
    DetectDnfCommand()
        : BaseSSHCommand({.description = QStringLiteral("Detect DNF package manager"),
                          .category = CommandCategory::Packages,
                          .commandString = QStringLiteral("command -v dnf 2>/dev/null")})
    {
    }
};

/// How many packages apt knows; the first line of apt-list(8) is a remark.
class AptCountPackagesCommand : public BaseSSHCommand
{
public:
    AptCountPackagesCommand()
        : BaseSSHCommand({.description = QStringLiteral("Count APT packages"),
                          .category = CommandCategory::Packages,
                          .commandString = QStringLiteral("apt list 2>/dev/null | tail -n +2 | wc -l")})
    {
    }
};

/// How many packages are installed ("ii", dpkg-query(1)).
class DpkgCountInstalledCommand : public BaseSSHCommand
{
public:
    DpkgCountInstalledCommand()
        : BaseSSHCommand({.description = QStringLiteral("Count installed packages via dpkg"),
                          .category = CommandCategory::Packages,
                          .commandString = QStringLiteral("dpkg -l | grep '^ii' | wc -l")})
    {
    }
};

/// How many packages dnf could install; the first line is a heading.
class DnfCountAvailableCommand : public BaseSSHCommand
{
public:
    DnfCountAvailableCommand()
        : BaseSSHCommand({.description = QStringLiteral("Count available DNF packages"),
                          .category = CommandCategory::Packages,
                          .commandString = QStringLiteral("dnf list available 2>/dev/null | tail -n +2 | wc -l")})
    {
    }
};

/// How many packages are installed.
class RpmCountInstalledCommand : public BaseSSHCommand
{
public:
    RpmCountInstalledCommand()
        : BaseSSHCommand({.description = QStringLiteral("Count installed packages via rpm"),
                          .category = CommandCategory::Packages,
                          .commandString = QStringLiteral("rpm -qa | wc -l")})
    {
    }
};
