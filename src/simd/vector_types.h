// The types that every set makes of its Raw vector.
#pragma once

namespace vidproc::VIDPROC_TARGET {
namespace {

struct I16 {
  Raw raw;
};
struct U8 {
  Raw raw;
};
struct I32 {
  Raw raw;
};

constexpr int kVectorBytes = sizeof(Raw);
constexpr int kLanes = kVectorBytes / 2;
#ifdef VIDPROC_TARGET_scalar
constexpr bool kHasVectors = false;
#else
constexpr bool kHasVectors = true;
#endif

inline I16 AsI16(U8 a) { return {a.raw}; }
inline I16 AsI16(I32 a) { return {a.raw}; }
inline U8 AsU8(I16 a) { return {a.raw}; }
inline I32 AsI32(I16 a) { return {a.raw}; }

}  // namespace
}  // namespace vidproc::VIDPROC_TARGET
