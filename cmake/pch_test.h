// Precompiled for the headless test programs.
#pragma once

#include "pch_core.h"

#include <QTest>
