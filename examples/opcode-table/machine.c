/* A small stack machine. Its instruction set is written down once, in opcodes.def; the numbering, the disassembler's
 * table, the width of its column and the interpreter are all made from it. */

int printf(const char *format, ...);

#ifndef FACTORIAL_OF
#define FACTORIAL_OF 5
#endif

#if FACTORIAL_OF < 1 || FACTORIAL_OF > 12
#error FACTORIAL_OF must lie between 1 and 12, so that the result fits into 32 bits
#endif

/* ---- The numbering of the instructions ---- */

#define OPCODE(name, operands, pops, pushes, action) OP_##name,
enum Opcode {
#include "opcodes.def"
  OPCODE_COUNT
};
#undef OPCODE

/* ---- The table for the disassembler ---- */

struct OpcodeInfo {
  const char *name;
  int operands, pops, pushes;
};

#define OPCODE(name, operands, pops, pushes, action) { #name, operands, pops, pushes },
static const struct OpcodeInfo opcodeTable[OPCODE_COUNT] = {
#include "opcodes.def"
};
#undef OPCODE

/* A union as large as the longest name: its size is the width of a column. */
#define OPCODE(name, operands, pops, pushes, action) char name[sizeof #name];
union LongestName {
#include "opcodes.def"
};
#undef OPCODE

enum { NAME_WIDTH = sizeof(union LongestName) };

/* ---- The state of the machine ---- */

#define CHECK(condition) ((condition) ? (void)0 : complain(#condition, __LINE__))

static int stack[16], cells[4];
static int depth, pc, running;

static void complain(const char *condition, int line) {
  printf("%s:%d: \"%s\" does not hold\n", __FILE__, line, condition);
  running = 0;
}

static void push(int value) {
  CHECK(depth < 16);
  stack[depth++] = value;
}

static int pop(void) {
  CHECK(depth > 0);
  return stack[--depth];
}

/* ---- The interpreter ---- */

#define BINARY(operator) { int right = pop(), left = pop(); push(left operator right); }

#ifdef TRACE
#define TRACE_STEP(name) printf("  [" #name " at %d, depth %d]\n", at, depth)
#else
#define TRACE_STEP(name) (void)at
#endif

static void run(const int *code) {
  for (running = 1, pc = 0; running;) {
    int at = pc, opcode = code[pc++], operand = 0;
    if (opcodeTable[opcode].operands != 0) operand = code[pc++];
    switch (opcode) {
#define OPCODE(name, operands, pops, pushes, action) case OP_##name: TRACE_STEP(name); action; break;
#include "opcodes.def"
#undef OPCODE
    }
  }
}

/* ---- The disassembler ---- */

static int disassemble(const int *code, int length) {
  int at, balance = 0;
  for (at = 0; at < length;) {
    const struct OpcodeInfo *info = &opcodeTable[code[at]];
    balance += info->pushes - info->pops;
    if (info->operands == 0) {
      printf("%2d  %s\n", at, info->name);
    } else {
      printf("%2d  %-*s%d\n", at, NAME_WIDTH, info->name, code[at + 1]);
    }
    at += 1 + info->operands;
  }
  return balance;
}

/* ---- A program for the machine: cell 0 counts down, cell 1 holds the product ---- */

#define SET(cell, value) OP_PUSH, value, OP_STORE, cell
#define COMBINE(operation, left, right, target) \
  OP_LOAD, left, OP_LOAD, right, OP_##operation, OP_STORE, target

enum { LOOP = 12 };

static const int program[] = {
  SET(0, FACTORIAL_OF),
  SET(1, 1),
  SET(2, 1),
  COMBINE(MULTIPLY,
          1,  /* the product so far */
          0,  /* the counter */
          1),
  COMBINE(SUBTRACT, 0, 2, 0),
  OP_LOAD, 0, OP_BRANCH, LOOP,
  OP_LOAD, 1, OP_PRINT,
  OP_HALT
};

int main(void) {
  int balance = disassemble(program, sizeof program / sizeof program[0]);
  printf("%d instructions, stack balance %d\n", OPCODE_COUNT, balance);
  run(program);
  return depth;
}
