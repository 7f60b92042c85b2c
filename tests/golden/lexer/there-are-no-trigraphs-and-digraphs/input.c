??=define X 1
%:define X 1
<: :> <% %> ??/
X
