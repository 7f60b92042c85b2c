/* Shadows and the mirrored sky at the quality chosen by -DQUALITY: 0 is low, 1 is medium, 2 is high. */
#ifndef QUALITY
#define QUALITY 1
#elif QUALITY < 0 || QUALITY > 2
#error QUALITY must be 0 (low), 1 (medium) or 2 (high)
#endif

#define HAS_SKY (QUALITY >= 2)

#if QUALITY == 0
#define SHADOW(position) 1.0
#else
#define TAP(x, y) shadowMap.SampleCmp(shadowSampler, position.xy + texel * float2(x, y), position.z)
#if QUALITY == 1
#define SHADOW_TAPS (TAP(-0.5, 0.0) + TAP(0.5, 0.0)) / 2.0
#else
#define SHADOW_TAPS (TAP(-0.5, -0.5) + TAP(0.5, -0.5) + TAP(-0.5, 0.5) + TAP(0.5, 0.5)) / 4.0
#endif
#define SHADOW(where) softShadow(where)

float softShadow(float3 position) {
  float2 texel = 1.0 / SHADOW_MAP_SIZE;
  return SHADOW_TAPS;
}
#endif
