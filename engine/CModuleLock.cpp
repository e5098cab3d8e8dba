#include "engine/CModuleLock.h"

LONG CModuleLock::s_lCount = 0;
