#pragma once

// The defaults that differ by platform.

namespace Vantrel {

// The option defaults that depend on what a system tells cheaply.

// Whether owners are collected. Linux tells the owner together with the size; Windows wants every file opened for it,
// which takes many times as long as the scan itself.
extern const bool kCollectOwnersByDefault;

// Whether hard links share their allocated size. Linux tells the link count together with the size; Windows wants every
// file opened for it.
extern const bool kShareHardLinksByDefault;

}  // namespace Vantrel
