mkdir folder
run cc folder 1 8 4 4 out.tk
run dc folder out.raw
