#include "model/options/OptionDefaults.h"

namespace Kiv {

const bool kCollectOwnersByDefault = true;
const bool kShareHardLinksByDefault = true;

}  // namespace Kiv
