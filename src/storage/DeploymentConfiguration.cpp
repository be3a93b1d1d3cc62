#include "storage/DeploymentConfiguration.h"
