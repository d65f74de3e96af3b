#include "model/options/OptionDefaults.h"

namespace Vantrel {

const bool kCollectOwnersByDefault = false;
const bool kShareHardLinksByDefault = false;

}  // namespace Vantrel
