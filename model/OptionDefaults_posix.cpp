#include "model/OptionDefaults.h"

namespace Kiv {

const bool kCollectOwnersByDefault = true;

}  // namespace Kiv
