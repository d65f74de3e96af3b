#pragma once

// The message that a call fails with.

#include <string>

namespace Vantrel::Testing {

// What the call fails with; empty when it does not. A failure of another kind is the test's.
template <class TError, class TCall>
std::string MessageOf(const TCall& pCall) {
  try {
    pCall();
  } catch (const TError& error) {
    return error.what();
  }
  return {};
}

}  // namespace Vantrel::Testing
