# Doxygen documents what a comment stands right above. Our headers say once what holds for a whole file, in its first
# comment, and for a group of declarations, above the first of them: this filter repeats it for each.
NR == 1 { head = 1; print "/// @file" }
head && /^\/\// { sub(/^\/\//, "///"); print; next }
{ head = 0 }
/^ *\/\/\/($|[^<])/ { comment = begun ? comment "\n" $0 : $0; begun = 1; print; next }
/^ *($|#(if|endif|include)|\/\/)|[{}]/ { if (!begun) comment = "" }
comment != "" && ended && !begun && !/\/\/\/</ { print comment }
{ begun = 0; ended = /;|^#define/; print }
