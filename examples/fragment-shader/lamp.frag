TEXT #version 450
TEXT #extension GL_GOOGLE_cpp_style_line_directive : require
#include "fog.glsl"

/* These conditions are for the shader compiler, which alone knows GL_ES. */
TEXT #ifdef GL_ES
precision mediump float;
TEXT #endif

layout(location = 0) in vec4 lamp;
layout(location = 0) out vec4 colour;

void main() {
  // It's a lamp that doesn't flicker: the apostrophes are in a comment.
  colour = FOGGED(lamp * BRIGHTNESS);
}
