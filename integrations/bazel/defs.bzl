"""Preprocessing with qnpp, for Bazel.

In WORKSPACE, with the place where qnpp is installed:

    local_repository(name = "rules_qnpp", path = "/usr/share/qnpp/bazel")
    load("@rules_qnpp//:defs.bzl", "qnpp_program")
    qnpp_program(name = "qnpp", path = "/usr/bin/qnpp-build")

In a BUILD file:

    load("@rules_qnpp//:defs.bzl", "qnpp_preprocess")
    qnpp_preprocess(
        name = "table",
        src = "table.c.in",
        out = "table.c",
        hdrs = ["include/units.h"],
        includes = ["include"],
        defines = ["WITH_SEA"],
    )

An action sees what is declared and nothing else: the source, `hdrs`, and the program. A header that is not declared is one
that cannot be opened. So a result may be made on any machine, and taken from any cache.
"""

def _qnpp_program_impl(ctx):
    ctx.symlink(ctx.attr.path, "qnpp-build")
    ctx.file("BUILD.bazel", 'exports_files(["qnpp-build"], visibility = ["//visibility:public"])\n')

qnpp_program = repository_rule(
    implementation = _qnpp_program_impl,
    attrs = {"path": attr.string(mandatory = True, doc = "The program qnpp-build on this machine.")},
    doc = "Makes a program of this machine one of the files that actions get.",
)

def _qnpp_preprocess_impl(ctx):
    folder = ctx.label.package
    root = ctx.bin_dir.path
    args = ctx.actions.args()
    for include in ctx.attr.includes:
        path = "/".join([part for part in [ctx.label.workspace_root, folder, include] if part not in ("", ".")]) or "."
        args.add("-I" + path)
        args.add("-I" + root + "/" + path)  # Headers that the build makes.
    for define in ctx.attr.defines:
        args.add("-D" + define)

    # The same names on each machine, wherever it keeps what it makes.
    args.add("--prefix-map=%s/=" % root)
    args.add_all(ctx.attr.options)
    args.add("-o", ctx.outputs.out)
    args.add(ctx.file.src)
    ctx.actions.run(
        executable = ctx.executable._program,
        arguments = [args],
        inputs = [ctx.file.src] + ctx.files.hdrs,
        outputs = [ctx.outputs.out],
        mnemonic = "QnppPreprocess",
        progress_message = "Preprocessing %s" % ctx.file.src.short_path,
    )
    return [DefaultInfo(files = depset([ctx.outputs.out]))]

qnpp_preprocess = rule(
    implementation = _qnpp_preprocess_impl,
    attrs = {
        "src": attr.label(mandatory = True, allow_single_file = True, doc = "The source."),
        "out": attr.output(mandatory = True, doc = "The result."),
        "hdrs": attr.label_list(allow_files = True, doc = "All files that the source may reach by #include."),
        "includes": attr.string_list(doc = "Folders to search for them, from that of the BUILD file."),
        "defines": attr.string_list(doc = "Macros, as NAME or NAME=text."),
        "options": attr.string_list(doc = "Further words for qnpp-build."),
        "_program": attr.label(default = "@qnpp//:qnpp-build", allow_single_file = True, executable = True, cfg = "exec"),
    },
    doc = "Makes one file from another by qnpp-build.",
)
