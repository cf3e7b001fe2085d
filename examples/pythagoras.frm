# The hypotenuse of a right triangle.
prompt a
prompt b
c = sqrt(a^2+b^2)
show c
print The triangle with sides &a and &b has hypotenuse &c .
