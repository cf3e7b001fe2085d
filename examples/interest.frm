# Compound interest: a principal at an annual rate in percent, compounded
# n times a year for a number of years.
prompt principal
prompt rate
prompt years
prompt n
amount = principal * (1 + rate / 100 / n) ^ (n * years)
print &principal at &rate % for &years years, compounded &n times a year, grows to &amount
interest = amount - principal
show interest
