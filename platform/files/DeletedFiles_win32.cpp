#include "platform/files/DeletedFiles.h"

namespace Vantrel {

int64_t OpenDeletedBytes(const std::u16string&) {
  return 0;
}

}  // namespace Vantrel
