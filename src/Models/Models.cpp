// placeholder until the records land
