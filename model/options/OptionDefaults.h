#pragma once

// The option defaults that differ by platform.

namespace Vantrel {

// These defaults depend on what each system provides cheaply.

// Whether owners are collected. Linux reports the owner together with the size. Windows must open every file for it,
// which takes many times as long as the scan itself.
extern const bool kCollectOwnersByDefault;

// Whether hard links share their allocated size. Linux reports the link count together with the size. Windows must open
// every file for it.
extern const bool kShareHardLinksByDefault;

}  // namespace Vantrel
