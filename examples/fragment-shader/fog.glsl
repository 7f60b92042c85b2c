/* With -DFOG, what is far away is grey. */
#ifdef FOG
layout(location = 1) in float distanceOfLamp;

#define FOG_START 10.0
#define FOGGED(seen) mix(vec4(0.5), seen, exp(min(FOG_START - distanceOfLamp, 0.0) * 1e-1))
#else
#define FOGGED(seen) seen
#endif
