#pragma once

#include "Views/Theme/Tokens.h"

#include <QString>

/// The colours of a label, "key:value", which its key decides: in every run the same.
ToneName labelTone(const QString &label);
