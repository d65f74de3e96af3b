#include "model/options/OptionDefaults.h"

namespace Kiv {

const bool kCollectOwnersByDefault = false;
const bool kShareHardLinksByDefault = false;

}  // namespace Kiv
