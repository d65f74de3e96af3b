#include "model/options/OptionDefaults.h"

namespace Vantrel {

const bool kCollectOwnersByDefault = true;
const bool kShareHardLinksByDefault = true;

}  // namespace Vantrel
