# Pages as Doxygen takes them: pictures go by their bare names, links to headings lead to their pages, the headers are
# pages, what only the source tree has is no link, and titles have no code in them.
s/(!\[[^]]*\]\()[^):]*\//\1/g
s/\.md#[^)]*\)/.md)/g
s/\[`?([^]`]*)`?\]\((\.\.\/)?include\/korvel\/(korvel\.h(pp)?)\)/[\1](@ref \3)/g
s/\[([^]]*)\]\((#[^)]*|(\.\.\/)?[^):.#@]*(\.(cpp|h|sh|in|txt|cmake|json))?)\)/\1/g
/^#+ /s/`//g
