#include "model/OptionDefaults.h"

namespace Kiv {

const bool kCollectOwnersByDefault = false;

}  // namespace Kiv
