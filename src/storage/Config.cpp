#include "storage/Config.h"
