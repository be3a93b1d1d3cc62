#include "storage/SecureTokenStore.h"
