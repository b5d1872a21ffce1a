# Links of the Markdown pages, as the site has them: pages lie in one folder, headers have a page of their own.
s|\]\(\.\./|](|g
s|\]\((include/vidproc/)([a-z_]+\.hp*)\)|](@ref \2)|g
