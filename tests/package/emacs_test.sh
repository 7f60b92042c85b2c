#!/usr/bin/env bash
# The settings for Emacs against every shape of message.
#
#   emacs_test.sh <folder of the settings> <program>
. "$(dirname "$0")/lib.sh"
. "$tests/messages.sh"
settings=$1 program=$2
needs emacs emacs-nox
writeMessages "$program"

cat >list.el <<'END'
(require 'qnpp)
;; A buffer as M-x compile leaves it, with no other expressions than ours.
(setq compilation-error-regexp-alist '(qnpp qnpp-cannot-open qnpp-comment))
(find-file "messages.txt")
(compilation-mode)
(compilation--ensure-parse (point-max))
(goto-char (point-min))
(while (not (eobp))
  (let ((message nil) (position (point)))
    (while (and (not message) (< position (line-end-position)))
      (setq message (get-text-property position 'compilation-message))
      (setq position (1+ position)))
    (if (not message)
        (princ "-\n")
      (let* ((location (compilation--message->loc message))
             (file (caar (compilation--loc->file-struct location))))
        (princ (format "%s|%s|%s\n" (aref ["info" "warning" "error"] (compilation--message->type message))
                       file (or (compilation--loc->line location) ""))))))
  (forward-line))
END
HOME=$work timeout 120 emacs -Q --batch -L "$settings" -l list.el >list 2>errors || failed 'emacs can read the messages' "$(cat errors)"
expected='error|main.c|1
warning|main.c|3
error|odd: name.c|2
error|absent.c|
error|absent.c|2
-
-
-
error|includes.c|1
-
error|main.c|7
-'
same 'what emacs makes of the messages' "$expected" "$(cat list)"
cp "$settings/qnpp.el" .
HOME=$work timeout 120 emacs -Q --batch --eval '(setq byte-compile-error-on-warn t)' -f batch-byte-compile qnpp.el >log 2>&1 ||
  failed 'the settings compile without warnings' "$(cat log)"

finish
