#include "storage/DebugLog.h"
