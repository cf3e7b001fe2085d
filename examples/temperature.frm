# A temperature in degrees Fahrenheit in degrees Celsius and in kelvins.
prompt f
c = (f - 32) * 5 / 9
k = c + 273.15
print &f degrees Fahrenheit = &c degrees Celsius = &k kelvins
