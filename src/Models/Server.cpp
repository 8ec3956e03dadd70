#include "Models/Server.h"
