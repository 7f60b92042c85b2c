#define SHADOW_MAP_SIZE (512 << QUALITY)

cbuffer Scene : register(b0) { float3 sun; float3 sky; float3 deepWater; }
Texture2D shadowMap : register(t0);
SamplerComparisonState shadowSampler : register(s0);

#include "lighting.hlsli"

float4 main(float3 position : TEXCOORD0, float3 normal : NORMAL) : SV_Target {
  float light = saturate(dot(normal, sun)) * SHADOW(position);
  float3 colour = deepWater * light;
#if HAS_SKY
  colour = lerp(colour, sky, pow(1.0 - saturate(normal.y), 5.0));
#endif
  return float4(colour, 1.0);
}
