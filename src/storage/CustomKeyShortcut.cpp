#include "storage/CustomKeyShortcut.h"
