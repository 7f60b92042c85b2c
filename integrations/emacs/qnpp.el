;;; qnpp.el --- messages of qnpp in compilation buffers  -*- lexical-binding: t -*-

;; (require 'qnpp) makes M-x compile and next-error know the messages of qnpp.

;;; Code:

(require 'compile)

(defconst qnpp-error-regexps
  '((qnpp "^\\([^\n]+?\\):\\([0-9]+\\): \\(?:\\(Warning\\): \\)?[^\n]*\\.$" 1 2 nil (3))
    (qnpp-cannot-open "^FATAL ERROR: cannot open \\([^\n]+\\)\\.$" 1)
    ;; Names no file; the one of the message before is taken.
    (qnpp-comment "^\\([0-9]+\\): unterminated comment\\.$" nil 1))
  "Entries for `compilation-error-regexp-alist-alist' and their names.")

(dolist (entry qnpp-error-regexps)
  (add-to-list 'compilation-error-regexp-alist-alist entry)
  (add-to-list 'compilation-error-regexp-alist (car entry)))

(provide 'qnpp)
;;; qnpp.el ends here
