// A plug-in of the emulator QEMU (user mode, interface version 1): counts the instructions that a program executes, by
// function. Exact and repeatable, where time under emulation means nothing.
//
//   qemu-aarch64 -plugin count_instructions.so -d plugin PROGRAM...      prints lines "NUMBER FUNCTION" at the end
//
// Functions are named as in the symbol table of PROGRAM itself, mangled: it should be linked statically.
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

// The few declarations of the emulator's interface that are used; its header is in no package of its own.
typedef uint64_t qemu_plugin_id_t;
struct qemu_plugin_tb;
struct qemu_plugin_insn;
enum { QEMU_PLUGIN_INLINE_ADD_U64 = 0 };
typedef void (*translated)(qemu_plugin_id_t id, struct qemu_plugin_tb* block);
typedef void (*ended)(qemu_plugin_id_t id, void* data);
void qemu_plugin_register_vcpu_tb_trans_cb(qemu_plugin_id_t id, translated callback);
void qemu_plugin_register_atexit_cb(qemu_plugin_id_t id, ended callback, void* data);
size_t qemu_plugin_tb_n_insns(const struct qemu_plugin_tb* block);
struct qemu_plugin_insn* qemu_plugin_tb_get_insn(const struct qemu_plugin_tb* block, size_t index);
const char* qemu_plugin_insn_symbol(const struct qemu_plugin_insn* instruction);
void qemu_plugin_register_vcpu_tb_exec_inline(struct qemu_plugin_tb* block, int operation, void* counter,
                                              uint64_t n);
void qemu_plugin_outs(const char* text);

struct function {
  char* name;
  uint64_t instructions;
  struct function* next;
};
enum { kLists = 4096 };
static struct function* functions[kLists];

static struct function* find(const char* name) {
  if (name == NULL) name = "(no symbol)";
  unsigned hash = 5381;
  for (const char* c = name; *c != 0; ++c) hash = hash * 33 + (unsigned char)*c;
  struct function** list = &functions[hash % kLists];
  for (struct function* f = *list; f != NULL; f = f->next)
    if (strcmp(f->name, name) == 0) return f;
  struct function* const f = calloc(1, sizeof *f);
  f->name = strdup(name);
  f->next = *list;
  return *list = f;
}

// A block is straight code and executed to its end: what it holds of each function is added whenever it is entered.
static void count_block(qemu_plugin_id_t id, struct qemu_plugin_tb* block) {
  (void)id;
  const size_t n = qemu_plugin_tb_n_insns(block);
  for (size_t i = 0; i < n;) {
    struct function* const f = find(qemu_plugin_insn_symbol(qemu_plugin_tb_get_insn(block, i)));
    size_t end = i + 1;
    while (end < n && find(qemu_plugin_insn_symbol(qemu_plugin_tb_get_insn(block, end))) == f) ++end;
    qemu_plugin_register_vcpu_tb_exec_inline(block, QEMU_PLUGIN_INLINE_ADD_U64, &f->instructions, end - i);
    i = end;
  }
}

static void print(qemu_plugin_id_t id, void* data) {
  (void)id, (void)data;
  char line[1024];
  for (int i = 0; i < kLists; ++i)
    for (const struct function* f = functions[i]; f != NULL; f = f->next)
      if (f->instructions != 0) {
        snprintf(line, sizeof line, "%llu %s\n", (unsigned long long)f->instructions, f->name);
        qemu_plugin_outs(line);
      }
}

__attribute__((visibility("default"))) int qemu_plugin_version = 1;
__attribute__((visibility("default"))) int qemu_plugin_install(qemu_plugin_id_t id, const void* info,
                                                               int argc, char** argv);
int qemu_plugin_install(qemu_plugin_id_t id, const void* info, int argc, char** argv) {
  (void)info, (void)argc, (void)argv;
  qemu_plugin_register_vcpu_tb_trans_cb(id, count_block);
  qemu_plugin_register_atexit_cb(id, print, NULL);
  return 0;
}
