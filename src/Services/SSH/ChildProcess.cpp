#include "Services/SSH/ChildProcess.h"
