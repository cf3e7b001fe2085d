# The roots of the quadratic a*x^2 + b*x + c = 0, from its three coefficients.
# A negative discriminant d means no real roots: x1 and x2 then show as not a number.
prompt a
prompt b
prompt c
d = b^2 - 4*a*c
x1 = (sqrt(d) - b) / (2*a)
x2 = (0 - sqrt(d) - b) / (2*a)
show d
show x1
show x2
